// Where parts stand, and what is said where a file leaves that open.

#include <string>

#include <gmock/gmock.h>

#include "tests/support/prepared_file.h"

namespace plenvorith {
namespace {

using test::prepared;
using test::Prepared;
using test::stepFile;
using testing::HasSubstr;
using testing::Not;

/// A product #20 with the shape representation #22, which is equal in place to a triangle in #42;
/// and a product #30 with #32. #52 is 10 up, #56 is 1 to the right.
const std::string kProducts = R"(#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));
#2=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#1))REPRESENTATION_CONTEXT('',''));
#20=PRODUCT_DEFINITION('part','',$,$);
#21=PRODUCT_DEFINITION_SHAPE('',$,#20);
#22=SHAPE_REPRESENTATION('',(#50),#2);
#23=SHAPE_DEFINITION_REPRESENTATION(#21,#22);
#24=SHAPE_REPRESENTATION_RELATIONSHIP('','',#22,#42);
#30=PRODUCT_DEFINITION('whole','',$,$);
#31=PRODUCT_DEFINITION_SHAPE('',$,#30);
#32=SHAPE_REPRESENTATION('',(#50),#2);
#33=SHAPE_DEFINITION_REPRESENTATION(#31,#32);
#40=COORDINATES_LIST('',3,((1.,0.,0.),(2.,0.,0.),(1.,3.,0.)));
#41=TRIANGULATED_FACE('',#40,3,(),$,(),((1,2,3)));
#42=TESSELLATED_SHAPE_REPRESENTATION('',(#41),#2);
#50=AXIS2_PLACEMENT_3D('',#51,$,$);
#51=CARTESIAN_POINT('',(0.,0.,0.));
#52=AXIS2_PLACEMENT_3D('',#53,$,$);
#53=CARTESIAN_POINT('',(0.,0.,10.));
#56=AXIS2_PLACEMENT_3D('',#57,$,$);
#57=CARTESIAN_POINT('',(1.,0.,0.));
)";
const std::string kAtOrigin = "(1.,0.,0.),(2.,0.,0.),(1.,3.,0.)";
const std::string kUp = "(1.,0.,10.),(2.,0.,10.),(1.,3.,10.)";

/// The points of all lists, each in brackets, in the order of the file.
std::string pointsOf(const Prepared& result) {
  std::string points;
  const std::string start = "=COORDINATES_LIST('',3,(";
  for (std::size_t at = result.file.find(start); at != std::string::npos;
       at = result.file.find(start, at + 1)) {
    const std::size_t begin = at + start.size();
    points += "[" + result.file.substr(begin, result.file.find("));\n", begin) - begin) + "]";
  }
  return points;
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

Prepared preparedParts(const std::string& more) {
  return prepared(stepFile(kProducts + more));
}

const std::string kUsage = R"(#60=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#30,#20,$);
#61=PRODUCT_DEFINITION_SHAPE('',$,#60);
#62=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#63,#61);
#63=(REPRESENTATION_RELATIONSHIP('','',#22,#32)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#64)SHAPE_REPRESENTATION_RELATIONSHIP());
#64=ITEM_DEFINED_TRANSFORMATION('',$,#50,#52);
)";

TEST(Places, AreOnceAtTheOriginWhereNothingPlacesAPart) {
  const Prepared result = preparedParts("");
  EXPECT_EQ(pointsOf(result), "[" + kAtOrigin + "]");
  EXPECT_THAT(result.out, Not(HasSubstr("Warning")));
}

TEST(Places, AreThoseOfUsagesWhicheverSideIsThePart) {
  EXPECT_EQ(pointsOf(preparedParts(kUsage)), "[" + kUp + "]");
  EXPECT_EQ(pointsOf(preparedParts(
                replaced(replaced(kUsage, "#22,#32", "#32,#22"), "#50,#52", "#52,#50"))),
            "[" + kUp + "]");
}

TEST(Places, UndoTheItemThatThePartIsPlacedBy) {
  EXPECT_EQ(pointsOf(preparedParts(replaced(kUsage, "#50,#52", "#56,#52"))),
            "[(0.,0.,10.),(1.,0.,10.),(0.,3.,10.)]");
}

TEST(Places, AreAtTheOriginOfTheWholeForAUsageThatSaysNothing) {
  const Prepared result =
      preparedParts("#60=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#30,#20,$);\n");
  EXPECT_EQ(pointsOf(result), "[" + kAtOrigin + "]");
  EXPECT_THAT(result.out, HasSubstr("  Warning: a usage of a product has no placement, none is "
                                    "taken\n"));
}

TEST(Places, EndWhereAProductIsPartOfItself) {
  const Prepared result =
      preparedParts(kUsage + "#70=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#20,#30,$);\n");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(pointsOf(result), "[" + kUp + "]");
  EXPECT_THAT(result.out, HasSubstr("  Warning: a product is part of itself\n"));
}

TEST(Places, AreThoseOfMappedItemsInAnotherProduct) {
  EXPECT_EQ(pointsOf(preparedParts(R"(#70=REPRESENTATION_MAP(#50,#22);
#71=MAPPED_ITEM('',#70,#52);
#72=SHAPE_REPRESENTATION('',(#71),#2);
#73=SHAPE_REPRESENTATION_RELATIONSHIP('','',#32,#72);
)")),
            "[" + kUp + "]");
}

TEST(Places, AreNotThoseOfViews) {
  // Of the product and, the relationship to it being gone, of the representation alone.
  const std::string view = R"(#70=REPRESENTATION_MAP(#50,#42);
#71=MAPPED_ITEM('',#70,#52);
#72=(DRAUGHTING_MODEL()REPRESENTATION('',(#71),#2));
)";
  EXPECT_EQ(pointsOf(preparedParts(view)), "[" + kAtOrigin + "]");
  EXPECT_EQ(pointsOf(prepared(stepFile(
                replaced(kProducts, "SHAPE_REPRESENTATION_RELATIONSHIP", "ANYTHING") + view))),
            "[" + kAtOrigin + "]");
}

TEST(Places, AddThoseOfRepositionedItems) {
  EXPECT_EQ(pointsOf(prepared(stepFile(replaced(
                replaced(kProducts, "TRIANGULATED_FACE('',#40,3,(),$,(),((1,2,3)))",
                         "(GEOMETRIC_REPRESENTATION_ITEM()REPOSITIONED_TESSELLATED_ITEM(#52)"
                         "REPRESENTATION_ITEM('')TESSELLATED_FACE(#40,3,(),$)TESSELLATED_ITEM()"
                         "TRIANGULATED_FACE((),((1,2,3))))"),
                "'',(#41),#2)", "'',(#43),#2);\n#43=TESSELLATED_SHELL('',(#41),$)")))),
            "[" + kUp + "]");
}

TEST(Places, OfAPlacementOfAnUnknownKindAreAtTheOrigin) {
  const Prepared result = preparedParts(replaced(kUsage, "#50,#52", "#50,#51"));
  EXPECT_EQ(pointsOf(result), "[" + kAtOrigin + "]");
  EXPECT_THAT(result.out, HasSubstr("  Warning: a placement is missing or of an unknown kind, none "
                                    "is taken\n"));
}

TEST(Places, AreInTheUnitOfTheirOwnContext) {
  // The part in centimetres, the whole in millimetres.
  const std::string centimetres =
      R"(#3=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.CENTI.,.METRE.));
#4=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#3))REPRESENTATION_CONTEXT('',''));
)";
  std::string products = kProducts;
  for (const char* part : {"#22=SHAPE_REPRESENTATION('',(#50),#", "REPRESENTATION('',(#41),#"}) {
    products = replaced(products, std::string(part) + "2", std::string(part) + "4");
  }
  const Prepared result =
      prepared(stepFile(products + centimetres + replaced(kUsage, "#50,#52", "#56,#52")));
  EXPECT_EQ(pointsOf(result), "[(0.,0.,10.),(10.,0.,10.),(0.,30.,10.)]");
  EXPECT_THAT(result.out, HasSubstr(", 10 mm a unit\n"));
}

TEST(Places, AreInMillimetresWhereThereIsNoUnit) {
  const Prepared result =
      prepared(stepFile(replaced(kProducts, "UNIT_ASSIGNED_CONTEXT((#1))", "X((#1))")));
  EXPECT_EQ(pointsOf(result), "[" + kAtOrigin + "]");
  EXPECT_THAT(result.out, HasSubstr("  Warning: no unit of length, millimetres are taken\n"));
}

TEST(Places, KeepNumbersAsTheyAreWrittenWhereNothingMovesOrScalesThem) {
  EXPECT_EQ(pointsOf(prepared(stepFile(
                replaced(kProducts, "(1.,0.,0.),(2.,0.,0.)", "(1.0E+00,-0.,+0.),(2.000,0.,0.)")))),
            "[(1.0E+00,-0.,+0.),(2.000,0.,0.),(1.,3.,0.)]");
}

TEST(Places, LeaveOutFacesWithoutCoordinatesAndCurvedOnesAndSaySo) {
  const Prepared result = preparedParts(R"(#43=TRIANGULATED_FACE('',#49,3,(),$,(),((1,2,3)));
#44=CUBIC_BEZIER_TRIANGULATED_FACE('',#40,3,(),$,());
#45=TESSELLATED_SHAPE_REPRESENTATION('',(#43,#44),#2);
)");
  EXPECT_EQ(pointsOf(result), "[" + kAtOrigin + "]");
  EXPECT_THAT(result.out, HasSubstr("  Warning: a face without coordinates is left out\n"));
  EXPECT_THAT(result.out, HasSubstr("  Warning: curved triangles (CUBIC_BEZIER_TRIANGULATED_FACE) "
                                    "are left out\n"));
}

}  // namespace
}  // namespace plenvorith
