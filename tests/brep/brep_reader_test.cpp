#include "brep/brep_reader.h"

#include <filesystem>
#include <vector>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <Bnd_Box.hxx>
#include <Standard_Version.hxx>
#include <TopAbs_ShapeEnum.hxx>
#include <TopExp_Explorer.hxx>
#include <gmock/gmock.h>

#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::bentSheet;
using test::boxAt;
using test::compoundOf;
using test::translation;
using test::writeStepFile;
using testing::ElementsAre;
using testing::IsEmpty;

struct ReadResult {
  bool read = false;
  Shapes shapes;
  std::string printed;
};

ReadResult readFrom(const std::string& path) {
  ReadResult result;
  result.printed = test::printedBy([&] { result.read = readBrepShapes(path, result.shapes); });
  return result;
}

std::vector<TopAbs_ShapeEnum> kindsOf(const Shapes& shapes) {
  std::vector<TopAbs_ShapeEnum> kinds;
  for (const TopoDS_Shape& shape : shapes) {
    kinds.push_back(shape.ShapeType());
  }
  return kinds;
}

double leastX(const TopoDS_Shape& shape) {
  Bnd_Box box;
  BRepBndLib::Add(shape, box);
  box.SetGap(0.0);
  return box.CornerMin().X();
}

/// A STEP file whose data section is `entities`.
std::string stepText(const std::string& entities) {
  return "ISO-10303-21;\n"
         "HEADER;\n"
         "FILE_DESCRIPTION((''),'2;1');\n"
         "FILE_NAME('','',(''),(''),'','','');\n"
         "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
         "ENDSEC;\n"
         "DATA;\n" +
         entities +
         "ENDSEC;\n"
         "END-ISO-10303-21;\n";
}

// A product whose shape is a piece of a plane, 4 by 3, without any shell.
constexpr const char* kLooseFace =
    "#90001=APPLICATION_CONTEXT('');\n"
    "#90002=PRODUCT_CONTEXT('',#90001,'mechanical');\n"
    "#90003=PRODUCT('face','face','',(#90002));\n"
    "#90004=PRODUCT_DEFINITION_FORMATION('','',#90003);\n"
    "#90005=PRODUCT_DEFINITION_CONTEXT('part definition',#90001,'design');\n"
    "#90006=PRODUCT_DEFINITION('design','',#90004,#90005);\n"
    "#90007=PRODUCT_DEFINITION_SHAPE('','',#90006);\n"
    "#90008=SHAPE_DEFINITION_REPRESENTATION(#90007,#90009);\n"
    "#90009=GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION('',(#90010),#90015);\n"
    "#90010=GEOMETRIC_SET('',(#90011));\n"
    "#90011=RECTANGULAR_TRIMMED_SURFACE('',#90012,0.,4.,0.,3.,.T.,.T.);\n"
    "#90012=PLANE('',#90013);\n"
    "#90013=AXIS2_PLACEMENT_3D('',#90014,$,$);\n"
    "#90014=CARTESIAN_POINT('',(0.,0.,0.));\n"
    "#90015=(GEOMETRIC_REPRESENTATION_CONTEXT(3)"
    "GLOBAL_UNIT_ASSIGNED_CONTEXT((#90016,#90017,#90018))REPRESENTATION_CONTEXT('',''));\n"
    "#90016=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#90017=(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.));\n"
    "#90018=(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT());\n";

TEST(BrepReader, ReadsOneSolid) {
  const test::TempDir dir;
  const ReadResult result = readFrom(writeStepFile(dir / "box.step", {boxAt(0)}));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 1, free shells: 0, free faces: 0\n");
  EXPECT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID));
}

TEST(BrepReader, ReadsTheSolidsAndThenTheSheetOfAnAssembly) {
  const test::TempDir dir;
  const ReadResult result = readFrom(writeStepFile(
      dir / "a.step", {compoundOf({boxAt(100), bentSheet(), boxAt(200), boxAt(300)})}));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 3, free shells: 1, free faces: 0\n");
  ASSERT_THAT(kindsOf(result.shapes),
              ElementsAre(TopAbs_SOLID, TopAbs_SOLID, TopAbs_SOLID, TopAbs_SHELL));
  EXPECT_NEAR(leastX(result.shapes[0]), 100, 1e-6);
  EXPECT_NEAR(leastX(result.shapes[1]), 200, 1e-6);
  EXPECT_NEAR(leastX(result.shapes[2]), 300, 1e-6);
  EXPECT_NEAR(leastX(result.shapes[3]), 0, 1e-6);
}

TEST(BrepReader, CountsEveryRootOfTheFile) {
  const test::TempDir dir;
  const ReadResult result = readFrom(writeStepFile(dir / "two.step", {boxAt(0), boxAt(50)}));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=2, shapes=2\n"
            "  Solids: 2, free shells: 0, free faces: 0\n");
  EXPECT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID, TopAbs_SOLID));
}

TEST(BrepReader, ReadsASolidAtTwoPlacesAsTwoSolids) {
  const test::TempDir dir;
  const TopoDS_Shape box = boxAt(0);
  const ReadResult result = readFrom(
      writeStepFile(dir / "moved.step", {compoundOf({box, box.Moved(translation(500, 0, 0))})}));
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 2, free shells: 0, free faces: 0\n");
  ASSERT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID, TopAbs_SOLID));
  EXPECT_NEAR(leastX(result.shapes[0]), 0, 1e-6);
  EXPECT_NEAR(leastX(result.shapes[1]), 500, 1e-6);
}

TEST(BrepReader, AppendsASolidThatIsMetTwiceTwiceAndCountsItOnce) {
  const test::TempDir dir;
  std::string text = test::readFile(writeStepFile(dir / "box.step", {boxAt(0)}));
  // The representation names an axis placement and the solid; now it names the solid twice.
  const std::size_t representation = text.find("= ADVANCED_BREP_SHAPE_REPRESENTATION('',(#11,#15)");
  ASSERT_NE(representation, std::string::npos);
  text.insert(text.find("#15", representation), "#15,");
  const ReadResult result = readFrom(test::writeFile(dir / "twice.step", text));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 1, free shells: 0, free faces: 0\n");
#if OCC_VERSION_HEX < 0x070800  // later releases transfer it only once
  ASSERT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID, TopAbs_SOLID));
  EXPECT_TRUE(result.shapes[0].IsSame(result.shapes[1]));
#endif
}

TEST(BrepReader, InnerShellOfAHollowSolidIsNotFree) {
  const test::TempDir dir;
  const TopoDS_Shape hollow =
      BRepAlgoAPI_Cut(boxAt(0), BRepPrimAPI_MakeBox(gp_Pnt(2, 2, 2), gp_Pnt(8, 18, 28)).Shape());
  const ReadResult result = readFrom(writeStepFile(dir / "hollow.step", {hollow}));
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 1, free shells: 0, free faces: 0\n");
  ASSERT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID));
  int shells = 0;
  for (TopExp_Explorer i(result.shapes[0], TopAbs_SHELL); i.More(); i.Next()) {
    ++shells;
  }
  EXPECT_EQ(shells, 2);
}

TEST(BrepReader, ReadsAFaceWithoutAShellAsAFreeFace) {
  const test::TempDir dir;
  const ReadResult result = readFrom(test::writeFile(dir / "face.step", stepText(kLooseFace)));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 0, free shells: 0, free faces: 1\n");
  EXPECT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_FACE));
}

TEST(BrepReader, FreeFacesFollowFreeShellsWhateverTheirOrderInTheFile) {
  const test::TempDir dir;
  std::string text = test::readFile(writeStepFile(dir / "b.step", {bentSheet(), boxAt(50)}));
  text.insert(text.find("DATA;\n") + 6, kLooseFace);
  const ReadResult result = readFrom(test::writeFile(dir / "all.step", text));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=3, shapes=3\n"
            "  Solids: 1, free shells: 1, free faces: 1\n");
  EXPECT_THAT(kindsOf(result.shapes), ElementsAre(TopAbs_SOLID, TopAbs_SHELL, TopAbs_FACE));
}

TEST(BrepReader, ReadsAModelOfCurvesAsOneShape) {
  const test::TempDir dir;
  const gp_Pnt corner(1, 0, 0);
  BRepBuilderAPI_MakeWire wire(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), corner),
                               BRepBuilderAPI_MakeEdge(corner, gp_Pnt(1, 1, 0)));
  const ReadResult result = readFrom(writeStepFile(dir / "wire.step", {wire.Wire()}));
  EXPECT_TRUE(result.read);
  EXPECT_EQ(result.printed,
            "  BRep: roots=1, shapes=1\n"
            "  Solids: 0, free shells: 0, free faces: 0\n");
  ASSERT_EQ(result.shapes.size(), 1u);
  int edges = 0;
  for (TopExp_Explorer i(result.shapes[0], TopAbs_EDGE); i.More(); i.Next()) {
    ++edges;
  }
  EXPECT_EQ(edges, 2);
}

TEST(BrepReader, ClearsTheShapesBeforeReading) {
  const test::TempDir dir;
  const std::string path = writeStepFile(dir / "box.step", {boxAt(0)});
  Shapes shapes = {boxAt(1), TopoDS_Shape(), boxAt(2)};
  (void)test::printedBy([&] { EXPECT_TRUE(readBrepShapes(path, shapes)); });
  EXPECT_EQ(shapes.size(), 1u);
}

TEST(BrepReader, RejectsAFileThatTransfersNothingAfterThePrintedRoots) {
  const test::TempDir dir;
  const ReadResult result = readFrom(
      test::writeFile(dir / "point.step", stepText("#1=CARTESIAN_POINT('',(0.,0.,0.));\n")));
  EXPECT_FALSE(result.read);
  EXPECT_EQ(result.printed, "  BRep: roots=0, shapes=0\n");
  EXPECT_THAT(result.shapes, IsEmpty());
}

/// Reads with shapes left over from before: a file that cannot be read leaves none.
void expectRejectedInSilence(const std::string& path) {
  Shapes shapes = {boxAt(0)};
  EXPECT_EQ(test::printedBy([&] { EXPECT_FALSE(readBrepShapes(path, shapes)); }), "");
  EXPECT_THAT(shapes, IsEmpty());
}

TEST(BrepReader, RejectsAMissingFile) {
  const test::TempDir dir;
  expectRejectedInSilence(dir / "missing.step");
  expectRejectedInSilence(dir / "missing" + "/file.step");
  expectRejectedInSilence("");
}

TEST(BrepReader, RejectsADirectory) {
  const test::TempDir dir;
  expectRejectedInSilence(dir.path());
}

TEST(BrepReader, RejectsAnEmptyFile) {
  const test::TempDir dir;
  expectRejectedInSilence(test::writeFile(dir / "empty.step", ""));
}

TEST(BrepReader, RejectsTextThatIsNotStep) {
  const test::TempDir dir;
  expectRejectedInSilence(test::writeFile(dir / "note.step", "solid cube\nendsolid cube\n"));
}

TEST(BrepReader, RejectsNulBytes) {
  const test::TempDir dir;
  expectRejectedInSilence(test::writeFile(dir / "nul.step", std::string(4096, '\0')));
}

}  // namespace
}  // namespace plenvorith
