#include "brep/brep_parts.h"

#include <cstring>

#include <gmock/gmock.h>

#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "tests/brep/brep_model.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::compoundOf;
using test::modelOf;
using test::replaced;
using test::sample;
using test::TempDir;
using test::translation;
using test::writeStepFile;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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

TEST(BrepParts, HaveThePlacesOfTheirUses) {
  const TempDir folder;
  const std::string text = test::readFile(sample("assembly.step"));
  const std::string path =
      test::writeFile(folder / "moved.step", replaced(text, "#24=CARTESIAN_POINT('',(0.,0.,0.))",
                                                      "#24=CARTESIAN_POINT('',(10.,20.,30.))"));
  const BrepModel model = modelOf(path);
  ASSERT_THAT(model.parts, SizeIs(4));
  EXPECT_THAT(model.parts[2].placement, ElementsAre(1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30));
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

}  // namespace
}  // namespace plenvorith
