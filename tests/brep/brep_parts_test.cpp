#include "brep/brep_parts.h"

#include <cmath>
#include <cstring>

#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <Interface_Static.hxx>
#include <STEPConstruct_ValidationProps.hxx>
#include <XSControl_WorkSession.hxx>
#include <gmock/gmock.h>

#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "brep/exact_measures.h"
#include "tests/support/captured_cout.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/sample_copies.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::compoundOf;
using test::TempDir;
using test::translation;
using test::writeStepFile;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

BrepModel modelOf(const std::string& path, bool withExact = false) {
  test::silenceKernel();
  BrepModel model;
  EXPECT_TRUE(readBrepParts(path, 0.1, withExact, model));
  return model;
}

std::string sample(const std::string& name) {
  static const test::SampleCopies samples{};
  return samples / name;
}

TEST(BrepParts, HaveTheTrianglesOfTheConverter) {
  for (const char* name : {"bracket.step", "assembly.step"}) {
    const BrepModel model = modelOf(sample(name));
    Shapes shapes;
    const std::string printed =
        test::printedBy([&] { (void)readBrepShapes(sample(name), shapes); });
    const std::vector<Triangle> expected = meshBrepShapes(shapes, 0.1);
    ASSERT_EQ(model.triangles.size(), expected.size());
    EXPECT_EQ(
        std::memcmp(model.triangles.data(), expected.data(), expected.size() * sizeof(Triangle)),
        0);
    std::uint64_t sum = 0;
    for (const BrepPart& part : model.parts) {
      sum += part.faces.triangles;
    }
    EXPECT_EQ(sum, expected.size());
  }
}

TEST(BrepParts, AreReadWithoutALine) {
  BrepModel model;
  EXPECT_EQ(test::printedBy(
                [&] { EXPECT_TRUE(readBrepParts(sample("bracket.step"), 0.1, false, model)); }),
            "");
}

TEST(BrepParts, HaveTheNamesOfTheirProducts) {
  const BrepModel model = modelOf(sample("assembly.step"));
  ASSERT_THAT(model.parts, SizeIs(4));
  EXPECT_THAT(model.parts[0].path, ElementsAre("lamp", "foot"));
  EXPECT_THAT(model.parts[1].path, ElementsAre("lamp", "pole"));
  EXPECT_THAT(model.parts[2].path, ElementsAre("lamp", "bulb"));
  EXPECT_THAT(model.parts[3].path, ElementsAre("lamp", "shade"));
  EXPECT_STREQ(model.parts[0].kind, "solid");
  EXPECT_STREQ(model.parts[3].kind, "shell");
}

/// Replaces every occurrence.
std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TEST(BrepParts, HaveTheNamesOfTheirSolids) {
  const TempDir folder;
  const std::string text = test::readFile(sample("bracket.step"));
  const std::string path =
      test::writeFile(folder / "named.step",
                      replaced(text, "MANIFOLD_SOLID_BREP(''", "MANIFOLD_SOLID_BREP('Body 1'"));
  const BrepModel model = modelOf(path);
  ASSERT_THAT(model.parts, SizeIs(1));
  EXPECT_EQ(model.parts[0].name, "Body 1");
  EXPECT_THAT(model.parts[0].path, ElementsAre("bracket"));
}

TEST(BrepParts, GoByTheIdentifierOfAProductWithoutName) {
  const TempDir folder;
  const std::string text = test::readFile(sample("bracket.step"));
  const std::string path = test::writeFile(
      folder / "unnamed.step", replaced(text, "PRODUCT('bracket','bracket'", "PRODUCT('P-17',''"));
  EXPECT_THAT(modelOf(path).parts.at(0).path, ElementsAre("P-17"));
}

TEST(BrepParts, TellWhereTheyStand) {
  const TempDir folder;
  const TopoDS_Shape box = boxAt(0);
  const std::string path = writeStepFile(folder / "placed.step",
                                         {compoundOf({box, box.Moved(translation(100, 20, 3))})});
  const BrepModel model = modelOf(path, true);
  ASSERT_THAT(model.parts, SizeIs(2));
  EXPECT_THAT(model.parts[0].exact.centroid->x, DoubleNear(5, 1e-9));
  EXPECT_THAT(model.parts[1].exact.centroid->x, DoubleNear(105, 1e-9));
  EXPECT_THAT(model.parts[1].exact.centroid->y, DoubleNear(30, 1e-9));
}

TEST(BrepParts, HaveThePlacementsOfTheirUses) {
  const BrepModel model = modelOf(sample("assembly.step"));
  for (const BrepPart& part : model.parts) {
    // Rotations keep lengths.
    for (std::size_t row = 0; row < 3; ++row) {
      const double* r = part.placement.data() + 4 * row;
      EXPECT_NEAR(r[0] * r[0] + r[1] * r[1] + r[2] * r[2], 1, 1e-12);
    }
  }
}

TEST(BrepParts, OfAFileWithoutGeometryAreNone) {
  const TempDir folder;
  test::silenceKernel();
  BrepModel model;
  EXPECT_FALSE(readBrepParts(folder / "none.step", 0.1, false, model));
  EXPECT_THAT(model.parts, IsEmpty());
}

void expectMeasures(const TopoDS_Shape& shape, double volume, double area) {
  const PartMeasures measures = exactMeasures(shape);
  EXPECT_THAT(measures.volume, Optional(DoubleNear(volume, 1e-9 * volume)));
  EXPECT_THAT(measures.area, Optional(DoubleNear(area, 1e-9 * area)));
}

TEST(ExactMeasures, AreThoseOfTheFormulas) {
  expectMeasures(BRepPrimAPI_MakeSphere(10).Shape(), 4000 * M_PI / 3, 400 * M_PI);
  expectMeasures(BRepPrimAPI_MakeTorus(10, 3).Shape(), 180 * M_PI * M_PI, 120 * M_PI * M_PI);
  expectMeasures(BRepPrimAPI_MakeCylinder(5, 20).Shape(), 500 * M_PI, 250 * M_PI);
  // 8 * pi / 3 * (64 + 16 + 4); the side is 10 long.
  expectMeasures(BRepPrimAPI_MakeCone(8, 2, 8).Shape(), 224 * M_PI, M_PI * (64 + 4 + (8 + 2) * 10));
}

TEST(ExactMeasures, OfASolidThatIsInsideOutHaveANegativeVolume) {
  EXPECT_THAT(exactMeasures(boxAt(0).Reversed()).volume, Optional(DoubleNear(-6000, 1e-9)));
}

TEST(ExactMeasures, OfASheetAreItsAreaAlone) {
  const PartMeasures measures = exactMeasures(test::bentSheet());
  EXPECT_EQ(measures.volume, std::nullopt);
  EXPECT_THAT(measures.area, Optional(DoubleNear(300, 1e-9)));
  EXPECT_FALSE(measures.centroid.has_value());
}

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

}  // namespace
}  // namespace plenvorith
