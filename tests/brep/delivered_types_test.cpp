// What the kernel makes faces of: types of items, types of representations that hold them, and the
// ways from a product to its representation. What is decided about tessellation rests on it.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "tests/support/exact_item_file.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::ExactItem;
using test::exactItemContext;
using test::exactItemFile;
using test::stepFileOf;

/// Whether the reader and the mesher together make triangles of a file.
bool givesTriangles(const std::string& content) {
  const test::TempDir dir;
  const std::string path = test::writeFile(dir / "in.stp", content);
  Shapes shapes;
  (void)test::printedBy([&] { (void)readBrepShapes(path, shapes); });
  constexpr double kCoarse = 1.0;
  return !shapes.empty() && !meshBrepShapes(shapes, kCoarse).empty();
}

const ExactItem kSolid = {"MANIFOLD_SOLID_BREP", "#100=MANIFOLD_SOLID_BREP('',#36);\n"};
const ExactItem kSurfaces = {"GEOMETRIC_SET", "#100=GEOMETRIC_SET('',(#97));\n"};

TEST(DeliveredTypes, AreThoseOfBoundaryRepresentationsAndBoundedSurfaces) {
  for (const ExactItem& item : test::deliveredItems()) {
    EXPECT_TRUE(givesTriangles(exactItemFile("SHAPE_REPRESENTATION", item))) << item.name;
  }
}

TEST(DeliveredTypes, AreNotThoseThatSayHowASolidIsMade) {
  for (const ExactItem& item : test::undeliveredItems()) {
    EXPECT_FALSE(givesTriangles(exactItemFile("SHAPE_REPRESENTATION", item))) << item.name;
  }
}

TEST(DeliveredTypes, MayHoldWhatIsNotDelivered) {
  for (const ExactItem& item : test::malformedItems()) {
    EXPECT_FALSE(givesTriangles(exactItemFile("SHAPE_REPRESENTATION", item))) << item.name;
  }
}

TEST(DeliveredTypes, StandInRepresentationsThatTheKernelKnows) {
  for (const std::string& type : test::deliveredRepresentations()) {
    EXPECT_TRUE(givesTriangles(exactItemFile(type, kSolid))) << type;
    EXPECT_TRUE(givesTriangles(exactItemFile(type, kSurfaces))) << type;
  }
  for (const std::string& type : test::undeliveredRepresentations()) {
    EXPECT_FALSE(givesTriangles(exactItemFile(type, kSolid))) << type;
    EXPECT_FALSE(givesTriangles(exactItemFile(type, kSurfaces))) << type;
  }
}

TEST(DeliveredTypes, StandInNoComplexRepresentation) {
  for (const char* representation :
       {"(REPRESENTATION('',(#100),#11)SHAPE_REPRESENTATION())",
        "(ADVANCED_BREP_SHAPE_REPRESENTATION()REPRESENTATION('',(#100),#11)SHAPE_REPRESENTATION())",
        "(CHARACTERIZED_OBJECT('','')CHARACTERIZED_REPRESENTATION()REPRESENTATION('',(#100),#11)"
        "SHAPE_REPRESENTATION())",
        "(DRAUGHTING_MODEL()REPRESENTATION('',(#100),#11)SHAPE_REPRESENTATION())"}) {
    EXPECT_FALSE(givesTriangles(
        stepFileOf(exactItemContext() + "#9=" + representation + ";\n" + kSolid.instances)))
        << representation;
  }
}

/// A file in which the solid stands in #200, and a product's shape, #9, holds a placement.
std::string withWay(const std::string& way) {
  return stepFileOf(exactItemContext() +
                    "#9=SHAPE_REPRESENTATION('',(#20),#11);\n"
                    "#200=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#20,#100),#11);\n"
                    "#210=SHAPE_REPRESENTATION('',(#20),#11);\n"
                    "#211=ITEM_DEFINED_TRANSFORMATION('','',#20,#20);\n" +
                    kSolid.instances + way);
}

TEST(DeliveredTypes, AreReachedOverOneSimpleRelationshipOfShapes) {
  for (const char* way : {
           "#201=SHAPE_REPRESENTATION_RELATIONSHIP('','',#9,#200);\n",
           "#201=SHAPE_REPRESENTATION_RELATIONSHIP('','',#200,#9);\n",
           "#201=SHAPE_DEFINITION_REPRESENTATION(#7,#200);\n",
           "#201=PRODUCT_DEFINITION_SHAPE('','',#6);\n"
           "#202=SHAPE_DEFINITION_REPRESENTATION(#201,#200);\n",
       }) {
    EXPECT_TRUE(givesTriangles(withWay(way))) << way;
  }
  for (const char* way : {
           "",
           "#201=REPRESENTATION_RELATIONSHIP('','',#9,#200);\n",
           "#201=CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP('','',#9,#200);\n",
           "#201=MECHANICAL_DESIGN_AND_DRAUGHTING_RELATIONSHIP('','',#9,#200);\n",
           "#201=(REPRESENTATION_RELATIONSHIP('','',#9,#200)SHAPE_REPRESENTATION_RELATIONSHIP());"
           "\n",
           "#201=(CONSTRUCTIVE_GEOMETRY_REPRESENTATION_RELATIONSHIP()"
           "REPRESENTATION_RELATIONSHIP('','',#9,#200)SHAPE_REPRESENTATION_RELATIONSHIP());\n",
           "#201=(REPRESENTATION_RELATIONSHIP('','',#9,#200)"
           "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#211)"
           "SHAPE_REPRESENTATION_RELATIONSHIP());\n",
           "#201=PROPERTY_DEFINITION_REPRESENTATION(#7,#200);\n",
       }) {
    EXPECT_FALSE(givesTriangles(withWay(way))) << way;
  }
}

TEST(DeliveredTypes, AreNotReachedOverTwoRelationships) {
  EXPECT_FALSE(
      givesTriangles(withWay("#201=SHAPE_REPRESENTATION_RELATIONSHIP('','',#9,#210);\n"
                             "#202=SHAPE_REPRESENTATION_RELATIONSHIP('','',#210,#200);\n")));
}

TEST(DeliveredTypes, AreReachedFromAShapeThatHoldsNothing) {
  EXPECT_TRUE(
      givesTriangles(stepFileOf(exactItemContext() +
                                "#9=SHAPE_REPRESENTATION('',(),#11);\n"
                                "#200=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#20,#100),#11);\n"
                                "#201=SHAPE_REPRESENTATION_RELATIONSHIP('','',#9,#200);\n" +
                                kSolid.instances)));
}

TEST(DeliveredTypes, AreReachedByNothingButAProduct) {
  EXPECT_FALSE(
      givesTriangles(stepFileOf("#9=SHAPE_REPRESENTATION('',(#1),$);\n"
                                "#1=GEOMETRIC_SET('',(#2));\n"
                                "#2=RECTANGULAR_TRIMMED_SURFACE('',#3,0.,4.,0.,3.,.T.,.T.);\n"
                                "#3=PLANE('',#4);\n"
                                "#4=AXIS2_PLACEMENT_3D('',#5,$,$);\n"
                                "#5=CARTESIAN_POINT('',(0.,0.,0.));\n")));
}

}  // namespace
}  // namespace plenvorith
