#include "brep/stated_measures.h"

#include <optional>
#include <string>
#include <vector>

#include <Interface_Static.hxx>
#include <STEPConstruct_ValidationProps.hxx>
#include <XSControl_WorkSession.hxx>
#include <gmock/gmock.h>

#include "tests/brep/brep_model.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::compoundOf;
using test::modelOf;
using test::replaced;
using test::TempDir;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Optional;
using testing::SizeIs;
using testing::UnorderedElementsAre;

/// Writes boxes, and what is to be said of them, in units of the given name.
std::string writeStatedFile(const std::string& path, const std::vector<TopoDS_Shape>& shapes,
                            const char* unit = "MM") {
  test::silenceKernel();
  Interface_Static::SetCVal("write.step.unit", unit);
  STEPControl_Writer writer;
  for (const TopoDS_Shape& shape : shapes) {
    EXPECT_EQ(writer.Transfer(shape, STEPControl_AsIs), IFSelect_RetDone);
    STEPConstruct_ValidationProps properties(writer.WS());
    EXPECT_TRUE(properties.AddVolume(shape, 6000));
    EXPECT_TRUE(properties.AddArea(shape, 2200));
    EXPECT_TRUE(properties.AddCentroid(shape, gp_Pnt(5, 10, 15)));
  }
  EXPECT_EQ(writer.Write(path.c_str()), IFSelect_RetDone);
  Interface_Static::SetCVal("write.step.unit", "MM");
  return path;
}

TEST(StatedMeasures, AreThoseOfTheFile) {
  const TempDir folder;
  const BrepModel model = modelOf(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  ASSERT_THAT(model.parts, SizeIs(1));
  EXPECT_THAT(model.parts[0].stated.volume, Optional(DoubleNear(6000, 1e-9)));
  EXPECT_THAT(model.parts[0].stated.area, Optional(DoubleNear(2200, 1e-9)));
  ASSERT_TRUE(model.parts[0].stated.centroid.has_value());
  EXPECT_THAT(model.parts[0].stated.centroid->z, DoubleNear(15, 1e-9));
  EXPECT_EQ(model.stated.volume, std::nullopt);
}

TEST(StatedMeasures, OfSeveralPiecesAreThoseOfTheWhole) {
  const TempDir folder;
  const BrepModel model =
      modelOf(writeStatedFile(folder / "stated.step", {compoundOf({boxAt(0), boxAt(50)})}));
  ASSERT_THAT(model.parts, SizeIs(2));
  EXPECT_EQ(model.parts[0].stated.volume, std::nullopt);
  EXPECT_THAT(model.stated.volume, Optional(DoubleNear(6000, 1e-9)));
}

TEST(StatedMeasures, AreInMillimetres) {
  const TempDir folder;
  const std::string text = test::readFile(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  // Its units are centimetres: lengths are ten times as long, areas a hundred times as large.
  const BrepModel model = modelOf(
      test::writeFile(folder / "centi.step",
                      replaced(text, "SI_UNIT(.MILLI.,.METRE.)", "SI_UNIT(.CENTI.,.METRE.)")),
      true);
  ASSERT_THAT(model.parts, SizeIs(1));
  EXPECT_THAT(model.parts[0].exact.volume, Optional(DoubleNear(6e6, 1e-3)));
  EXPECT_THAT(model.parts[0].stated.volume, Optional(DoubleNear(6e6, 1e-3)));
  EXPECT_THAT(model.parts[0].stated.area, Optional(DoubleNear(2.2e5, 1e-3)));
  EXPECT_THAT(model.parts[0].stated.centroid->x, DoubleNear(50, 1e-9));
}

TEST(StatedMeasures, OfOtherPropertiesArePassedOver) {
  const TempDir folder;
  const std::string text = test::readFile(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  const BrepModel model = modelOf(test::writeFile(
      folder / "other.step",
      replaced(text, "'geometric validation property'", "'property of something else'")));
  EXPECT_EQ(model.parts.at(0).stated.volume, std::nullopt);
  EXPECT_EQ(model.parts.at(0).stated.area, std::nullopt);
  EXPECT_FALSE(model.parts.at(0).stated.centroid.has_value());
}

TEST(StatedMeasures, AreFoundByTheOlderName) {
  const TempDir folder;
  const std::string text = test::readFile(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  const BrepModel model = modelOf(test::writeFile(
      folder / "older.step",
      replaced(text, "'geometric validation property'", "'geometric_validation_property'")));
  EXPECT_THAT(model.parts.at(0).stated.volume, Optional(DoubleNear(6000, 1e-9)));
}

TEST(StatedMeasures, OfAnAreaMayBeCalledWetted) {
  const TempDir folder;
  const std::string text = test::readFile(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  const BrepModel model = modelOf(test::writeFile(
      folder / "wetted.step", replaced(text, "'surface area measure'", "'wetted area measure'")));
  EXPECT_THAT(model.parts.at(0).stated.area, Optional(DoubleNear(2200, 1e-9)));
}

TEST(StatedMeasures, NeedTheirNameAndTheirType) {
  const TempDir folder;
  const std::string text = test::readFile(writeStatedFile(folder / "stated.step", {boxAt(0)}));
  std::string renamed = replaced(text, "'volume measure'", "'measure of volume'");
  renamed = replaced(renamed, "'surface area measure'", "'measure of surface'");
  renamed = replaced(renamed, "'centre point'", "'centre'");
  std::string retyped = replaced(text, "VOLUME_MEASURE(", "LENGTH_MEASURE(");
  retyped = replaced(retyped, "AREA_MEASURE(", "RATIO_MEASURE(");
  for (const std::string& changed : {renamed, retyped}) {
    ASSERT_NE(changed, text);
    const BrepModel model = modelOf(test::writeFile(folder / "changed.step", changed));
    EXPECT_EQ(model.parts.at(0).stated.volume, std::nullopt);
    EXPECT_EQ(model.parts.at(0).stated.area, std::nullopt);
    EXPECT_EQ(model.parts.at(0).stated.centroid.has_value(), changed == retyped);
  }
}

/// The lamp, whose bulb stands at (10, 20, 30), with more instances.
BrepModel lampWith(const std::string& instances) {
  const TempDir folder;
  std::string text = test::readFile(test::sample("assembly.step"));
  text =
      replaced(text, "#24=CARTESIAN_POINT('',(0.,0.,0.))", "#24=CARTESIAN_POINT('',(10.,20.,30.))");
  text.insert(text.rfind("ENDSEC;"), instances);
  return modelOf(test::writeFile(folder / "lamp.step", text));
}

/// A volume of 6.4 and a centre at (1, 2, 3), stated of an instance.
std::string statedOf(const std::string& instance) {
  return "#900=PROPERTY_DEFINITION_REPRESENTATION(#901,#902);\n"
         "#901=PROPERTY_DEFINITION('geometric validation property',''," +
         instance +
         ");\n"
         "#902=REPRESENTATION('',(#903,#907),#201);\n"
         "#903=MEASURE_REPRESENTATION_ITEM('volume measure',VOLUME_MEASURE(6.4),#904);\n"
         "#904=DERIVED_UNIT((#905));\n"
         "#905=DERIVED_UNIT_ELEMENT(#906,3.);\n"
         "#906=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
         "#907=CARTESIAN_POINT('centre point',(1.,2.,3.));\n";
}

const char* const kLamp = "#4";
const char* const kBulb = "#182";
constexpr std::size_t kBulbsPlace = 2;

/// The volumes that are stated of the lamp's foot, pole, bulb and shade; 0: none.
std::vector<double> volumesIn(const BrepModel& model) {
  std::vector<double> volumes;
  for (const BrepPart& part : model.parts) {
    volumes.push_back(part.stated.volume.value_or(0));
  }
  return volumes;
}

TEST(StatedMeasures, OfAPartArePlacedLikeIt) {
  const BrepModel model = lampWith(statedOf(kBulb));
  EXPECT_THAT(volumesIn(model), ElementsAre(0, 0, DoubleNear(6.4, 1e-12), 0));
  const std::optional<Point3> centre = model.parts.at(kBulbsPlace).stated.centroid;
  ASSERT_TRUE(centre.has_value());
  EXPECT_THAT(centre->x, DoubleNear(11, 1e-9));
  EXPECT_THAT(centre->y, DoubleNear(22, 1e-9));
  EXPECT_THAT(centre->z, DoubleNear(33, 1e-9));
  EXPECT_EQ(model.stated.volume, std::nullopt);
}

TEST(StatedMeasures, OfAPartAreThoseOfEachOfItsUses) {
  const BrepModel model =
      lampWith(statedOf(kBulb) +
               "#940=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#941,#943);\n"
               "#941=(REPRESENTATION_RELATIONSHIP('','',#188,#10)"
               "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#942)"
               "SHAPE_REPRESENTATION_RELATIONSHIP());\n"
               "#942=ITEM_DEFINED_TRANSFORMATION('','',#11,#945);\n"
               "#943=PRODUCT_DEFINITION_SHAPE('Placement','Placement of an item',#944);\n"
               "#944=NEXT_ASSEMBLY_USAGE_OCCURRENCE('5','','',#5,#183,$);\n"
               "#945=AXIS2_PLACEMENT_3D('',#946,#25,#26);\n"
               "#946=CARTESIAN_POINT('',(100.,0.,0.));\n");
  std::vector<double> centres;
  for (const BrepPart& part : model.parts) {
    if (part.stated.volume) {
      centres.push_back(part.stated.centroid.value_or(Point3{}).x);
    }
  }
  EXPECT_THAT(centres, UnorderedElementsAre(DoubleNear(11, 1e-9), DoubleNear(101, 1e-9)));
}

TEST(StatedMeasures, OfAnAssemblyAreThoseOfTheWhole) {
  const BrepModel model = lampWith(statedOf(kLamp));
  EXPECT_THAT(volumesIn(model), ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(model.stated.volume, Optional(DoubleNear(6.4, 1e-12)));
  EXPECT_THAT(model.stated.centroid.value_or(Point3{}).z, DoubleNear(3, 1e-9));
}

TEST(StatedMeasures, OfOneUseAreNoneOfItsPart) {
  const BrepModel model = lampWith(statedOf("#209"));
  EXPECT_THAT(volumesIn(model), ElementsAre(0, 0, 0, 0));
  EXPECT_EQ(model.stated.volume, std::nullopt);
}

TEST(StatedMeasures, OfOneSolidInAProductAreFound) {
  const std::string aspect = statedOf("#910") +
                             "#910=SHAPE_ASPECT('','',#182,.F.);\n"
                             "#911=PROPERTY_DEFINITION('what it is of','',#910);\n"
                             "#912=SHAPE_DEFINITION_REPRESENTATION(#911,#913);\n";
  EXPECT_THAT(volumesIn(lampWith(aspect + "#913=SHAPE_REPRESENTATION('',(#11,#189),#201);\n")),
              ElementsAre(0, 0, DoubleNear(6.4, 1e-12), 0));
  // Nothing that was read.
  EXPECT_THAT(volumesIn(lampWith(aspect + "#913=SHAPE_REPRESENTATION('',(#11),#201);\n")),
              ElementsAre(0, 0, 0, 0));
}

TEST(StatedMeasures, MayMixUnitsOfLength) {
  const std::string mixed =
      replaced(statedOf(kBulb), "#904=DERIVED_UNIT((#905));\n#905=DERIVED_UNIT_ELEMENT(#906,3.);\n",
               "#904=DERIVED_UNIT((#908,#905));\n#905=DERIVED_UNIT_ELEMENT(#906,1.);\n"
               "#908=DERIVED_UNIT_ELEMENT(#909,2.);\n"
               "#909=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.CENTI.,.METRE.));\n");
  EXPECT_THAT(volumesIn(lampWith(mixed)), ElementsAre(0, 0, DoubleNear(640, 1e-9), 0));
}

TEST(StatedMeasures, InOtherUnitsArePassedOver) {
  const std::string stated = statedOf(kBulb);
  for (const std::string& other :
       {replaced(stated, "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.))",
                 "(MASS_UNIT()NAMED_UNIT(*)SI_UNIT(.KILO.,.GRAM.))"),
        replaced(stated, "(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.))",
                 "(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.))"),
        replaced(stated, "VOLUME_MEASURE(6.4),#904", "VOLUME_MEASURE(6.4),#906")}) {
    ASSERT_NE(other, stated);
    const BrepModel model = lampWith(other);
    EXPECT_THAT(volumesIn(model), ElementsAre(0, 0, 0, 0));
    EXPECT_TRUE(model.parts.at(kBulbsPlace).stated.centroid.has_value());
  }
}

TEST(StatedMeasures, OfWhatLeadsNowhereArePassedOver) {
  const std::string stated = statedOf(kBulb);
  for (const std::string& damaged :
       {replaced(stated, "(#901,#902)", "(#901,$)"), replaced(stated, "(#901,#902)", "($,#902)"),
        replaced(stated, "VOLUME_MEASURE(6.4),#904", "VOLUME_MEASURE(6.4),$"),
        replaced(stated, "VOLUME_MEASURE(6.4),#904", "$,#904"),
        replaced(stated, "DERIVED_UNIT((#905))", "DERIVED_UNIT($)"),
        replaced(stated, "DERIVED_UNIT_ELEMENT(#906,3.)", "DERIVED_UNIT_ELEMENT($,3.)"),
        replaced(stated, "(#903,#907)", "$"), replaced(stated, "'volume measure'", "$"),
        replaced(stated, "'',#182);", "'',$);")}) {
    ASSERT_NE(damaged, stated);
    EXPECT_THAT(volumesIn(lampWith(damaged)), ElementsAre(0, 0, 0, 0)) << damaged;
  }
}

TEST(StatedMeasures, OfASolidBesideCurvesAreItsOwn) {
  const TempDir folder;
  std::string text = test::readFile(test::sample("assembly.step"));
  text = replaced(text, "('',(#11,#189),#201)", "('',(#11,#189,#920),#201)");
  text.insert(text.rfind("ENDSEC;"), statedOf(kBulb) +
                                         "#920=GEOMETRIC_CURVE_SET('',(#921));\n"
                                         "#921=POLYLINE('',(#922,#923));\n"
                                         "#922=CARTESIAN_POINT('',(0.,0.,0.));\n"
                                         "#923=CARTESIAN_POINT('',(5.,0.,0.));\n");
  EXPECT_THAT(volumesIn(modelOf(test::writeFile(folder / "curves.step", text))),
              ElementsAre(0, 0, DoubleNear(6.4, 1e-12), 0));
}

}  // namespace
}  // namespace plenvorith
