#include "prepare/forecast.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/step_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

std::string withChanged(std::string text, std::string_view what, std::string_view with) {
  return text.replace(text.find(what), what.size(), with);
}

/// Two triangles in millimetres that stand where their numbers say.
const std::string kPlain =
    "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))"
    "REPRESENTATION_CONTEXT('',''));\n"
    "#10=COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(0.,0.,1.)));\n"
    "#11=COMPLEX_TRIANGULATED_FACE('',#10,4,(),$,(),((1,2,3),(2,3,4)),());\n"
    "#12=TESSELLATED_SOLID('',(#11),$);\n"
    "#13=TESSELLATED_SHAPE_REPRESENTATION('',(#12),#2);\n";

Forecast forecastOf(const std::string& data) {
  const test::TempDir dir;
  const auto forecast = forecastPreparation(test::writeFile(dir / "a.stp", test::stepFile(data)));
  EXPECT_TRUE(forecast.has_value());
  return forecast.value_or(Forecast());
}

/// The fields that are set, in words.
std::string setIn(const Forecast& forecast) {
  std::string text = std::to_string(forecast.triangles);
  text += forecast.hasExact ? " exact" : "";
  text += forecast.hasStrips ? " strips" : "";
  text += forecast.hasFans ? " fans" : "";
  text += forecast.isMapped ? " mapped" : "";
  text += forecast.isScaled ? " scaled" : "";
  text += forecast.isPlaced ? " placed" : "";
  text += forecast.hasAnnotation ? " annotation" : "";
  return text + (forecast.hasOrphans ? " orphans" : "");
}

TEST(Forecast, FindsNothingInAFileThatIsInTheFormAlready) {
  EXPECT_EQ(setIn(forecastOf(kPlain)), "2");
  EXPECT_EQ(setIn(forecastOf("#1=PRODUCT('','','',());\n")), "0");
}

TEST(Forecast, CountsFlatTrianglesAsTheConverterDoes) {
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "(2,3,4)", "(2,3,3)"))), "2");
  const std::string flat = "#11=TRIANGULATED_FACE('',#10,4,(),$,(),((1,2,3),(2,3,3)));\n";
  const std::size_t face = kPlain.find("#11=");
  std::string other = kPlain;
  other.replace(face, kPlain.find("#12=") - face, flat);
  EXPECT_EQ(setIn(forecastOf(other)), "2");
}

TEST(Forecast, FindsStripsAndFans) {
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "(1,2,3),(2,3,4)", "(1,2,3,4)"))), "2 strips");
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "(2,3,4)),()", "(2,3,4)),((1,2,4))"))), "3 fans");
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "(2,3,4)),()", "(2,3,4)),((1,2,3,4))"))),
            "4 fans");
}

TEST(Forecast, FindsMappingsThatChangeAnIndex) {
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "$,()", "$,(1,2,3,4)"))), "2");
  EXPECT_EQ(setIn(forecastOf(withChanged(kPlain, "$,()", "$,(1,2,4,3)"))), "2 mapped");
}

TEST(Forecast, FindsUnitsAndPlacements) {
  const std::string metres = withChanged(kPlain, ".MILLI.", "$");
  EXPECT_EQ(setIn(forecastOf(metres)), "2 scaled");
  const std::string place =
      "#20=AXIS2_PLACEMENT_3D('',#21,$,$);\n"
      "#21=CARTESIAN_POINT('',(0.,0.,0.));\n";
  std::string placed = kPlain + place;
  placed = withChanged(placed, "TESSELLATED_SOLID('',(#11),$)",
                       "(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#20)"
                       "REPRESENTATION_ITEM('')TESSELLATED_ITEM()TESSELLATED_SOLID((#11),$))");
  EXPECT_EQ(setIn(forecastOf(placed)), "2");
  const std::string moved = withChanged(placed, "CARTESIAN_POINT('',(0.", "CARTESIAN_POINT('',(5.");
  EXPECT_EQ(setIn(forecastOf(moved)), "2 placed");
  EXPECT_EQ(setIn(forecastOf(withChanged(moved, ".MILLI.", "$"))), "2 scaled placed");
}

TEST(Forecast, FindsExactGeometryAndAnnotation) {
  const std::string exact =
      "#30=PRODUCT_DEFINITION_SHAPE('','',#34);#34=PRODUCT_DEFINITION('','',$,$);\n#31=SHAPE_"
      "DEFINITION_REPRESENTATION(#30,#32);\n"
      "#32=SHAPE_REPRESENTATION('',(#33),#2);\n#33=MANIFOLD_SOLID_BREP('',$);\n";
  EXPECT_EQ(setIn(forecastOf(kPlain + exact)), "2 exact");
  const std::string drawn =
      "#40=TESSELLATED_SHAPE_REPRESENTATION('',(#41),#2);\n"
      "#41=TESSELLATED_ANNOTATION_OCCURRENCE('',(),#42);\n#42=TESSELLATED_GEOMETRIC_SET('',(#43));"
      "\n"
      "#43=TESSELLATED_CURVE_SET('',#10,((1,2)));\n";
  EXPECT_EQ(setIn(forecastOf(drawn + exact)), "0 exact annotation");
  EXPECT_EQ(setIn(forecastOf(kPlain + "#32=SHAPE_REPRESENTATION('',(#33),#2);\n"
                                      "#33=MANIFOLD_SOLID_BREP('',$);\n")),
            "2 exact orphans");
}

TEST(Forecast, ForeseesNothingOfWhatCannotBePrepared) {
  const test::TempDir dir;
  EXPECT_FALSE(forecastPreparation(dir / "none.stp").has_value());
  EXPECT_FALSE(forecastPreparation(test::writeFile(dir / "a.stp", "no STEP file")).has_value());
  const std::string broken = withChanged(kPlain, "((1,2,3)", "((x,2,3)");
  EXPECT_FALSE(
      forecastPreparation(test::writeFile(dir / "b.stp", test::stepFile(broken))).has_value());
}

}  // namespace
}  // namespace plenvorith
