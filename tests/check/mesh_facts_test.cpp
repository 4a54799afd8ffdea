#include "check/mesh_facts.h"

#include <random>

#include <gmock/gmock.h>

#include "tests/check/meshes.h"
#include "tests/reference/reference_mesh.h"

namespace plenvorith {
namespace {

using test::cubeAt;
using test::facet;
using test::factsOfFile;
using test::flipped;
using test::StlRecord;
using test::together;
using testing::DoubleEq;
using testing::DoubleNear;

TEST(MeshFacts, OfACube) {
  const MeshFacts facts = factsOfFile(cubeAt(1, 2, 3, 2));
  EXPECT_EQ(facts.openEdges, 0U);
  EXPECT_EQ(facts.pieces, 1U);
  EXPECT_EQ(facts.measure.triangles, 12U);
  EXPECT_EQ(facts.measure.degenerate, 0U);
  EXPECT_THAT(volumeOf(facts.measure), DoubleEq(8));
  EXPECT_THAT(facts.measure.area, DoubleEq(24));
  EXPECT_EQ(facts.measure.low.x, 1);
  EXPECT_EQ(facts.measure.low.y, 2);
  EXPECT_EQ(facts.measure.low.z, 3);
  EXPECT_EQ(facts.measure.high.x, 3);
  EXPECT_EQ(facts.measure.high.y, 4);
  EXPECT_EQ(facts.measure.high.z, 5);
  const Point3 centroid = centroidOf(facts.measure);
  EXPECT_THAT(centroid.x, DoubleEq(2));
  EXPECT_THAT(centroid.y, DoubleEq(3));
  EXPECT_THAT(centroid.z, DoubleEq(4));
}

TEST(MeshFacts, KeepTheVolumeFarFromTheOrigin) {
  EXPECT_THAT(volumeOf(factsOfFile(cubeAt(1 << 22, 1 << 22, 1 << 22)).measure), DoubleEq(1));
}

TEST(MeshFacts, OfACubeInsideOut) {
  std::vector<StlRecord> cube = cubeAt(0, 0, 0);
  std::transform(cube.begin(), cube.end(), cube.begin(), flipped);
  const MeshFacts facts = factsOfFile(cube);
  EXPECT_EQ(facts.openEdges, 0U);
  EXPECT_THAT(volumeOf(facts.measure), DoubleEq(-1));
}

TEST(MeshFacts, TellOfATriangleRemoved) {
  for (std::size_t i = 0; i < 12; ++i) {
    std::vector<StlRecord> cube = cubeAt(0, 0, 0);
    cube.erase(cube.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_EQ(factsOfFile(cube).openEdges, 3U);
  }
}

TEST(MeshFacts, TellOfATriangleFlipped) {
  for (std::size_t i = 0; i < 12; ++i) {
    std::vector<StlRecord> cube = cubeAt(0, 0, 0);
    cube[i] = flipped(cube[i]);
    EXPECT_EQ(factsOfFile(cube).openEdges, 6U);
  }
}

TEST(MeshFacts, TellOfATriangleDoubled) {
  for (std::size_t i = 0; i < 12; ++i) {
    std::vector<StlRecord> cube = cubeAt(0, 0, 0);
    cube.push_back(cube[i]);
    EXPECT_EQ(factsOfFile(cube).openEdges, 3U);
  }
}

TEST(MeshFacts, FindCubesThatTouchClosed) {
  const MeshFacts alongAnEdge = factsOfFile(together(cubeAt(0, 0, 0), cubeAt(1, 1, 0)));
  EXPECT_EQ(alongAnEdge.openEdges, 0U);
  EXPECT_EQ(alongAnEdge.pieces, 1U);
  const MeshFacts atAVertex = factsOfFile(together(cubeAt(0, 0, 0), cubeAt(1, 1, 1)));
  EXPECT_EQ(atAVertex.openEdges, 0U);
  EXPECT_EQ(atAVertex.pieces, 1U);
  const MeshFacts apart = factsOfFile(together(cubeAt(0, 0, 0), cubeAt(2, 2, 2)));
  EXPECT_EQ(apart.openEdges, 0U);
  EXPECT_EQ(apart.pieces, 2U);
}

TEST(MeshFacts, FindMoebiusStripOpen) {
  // Its one border, and twice the side where its two ends meet in the same direction.
  EXPECT_EQ(factsOfFile(test::moebiusStrip(20)).openEdges, 2U * 20 + 2);
}

TEST(MeshFacts, CountTrianglesWithoutArea) {
  const std::vector<StlRecord> records = {
      facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), facet({0, 0, 0}, {1, 1, 1}, {2, 2, 2}),
      facet({1, 0, 0}, {1, 0, 0}, {0, 1, 0}), facet({1, 1, 1}, {1, 1, 1}, {1, 1, 1})};
  EXPECT_EQ(factsOfFile(records).measure.degenerate, 3U);
}

TEST(MeshFacts, DoNotJoinWhatAFileHoldsApart) {
  std::vector<StlRecord> cube = cubeAt(1, 1, 1);
  cube[0][3] = std::nextafter(cube[0][3], 2.0F);
  EXPECT_EQ(factsOfFile(cube).openEdges, 4U);
}

TEST(MeshFacts, OfTrianglesAreThoseOfTheirFile) {
  std::vector<Triangle> triangles;
  for (const StlRecord& r : cubeAt(0, 0, 0)) {
    // What the file rounds away makes no difference.
    triangles.push_back(
        makeTriangle({r[3] + 1e-12, r[4], r[5]}, {r[6], r[7], r[8]}, {r[9], r[10], r[11] - 1e-12}));
  }
  const MeshFacts facts = meshFactsOf(triangles);
  EXPECT_EQ(facts.pieces, 1U);
  EXPECT_THAT(facts.measure.area, DoubleNear(6, 1e-9));
}

TEST(MeshFacts, RejectFileThatIsNoMesh) {
  test::MemoryFile file;
  MeshFacts facts;
  EXPECT_EQ(readMeshFacts(file.write("ISO-10303-21;"), facts),
            "ends after 13 bytes, inside the 84 in front of the first triangle");
}

/// Triangles between few places, so that sides meet in every way.
std::vector<StlRecord> randomMesh(std::mt19937& random) {
  const auto count = static_cast<unsigned>(random() % 30);
  const auto places = static_cast<unsigned>(1 + random() % 4);
  std::vector<StlRecord> records;
  for (unsigned i = 0; i < count; ++i) {
    StlRecord record{};
    for (std::size_t k = 3; k < record.size(); ++k) {
      record[k] = static_cast<float>(random() % places) - 1;
      record[k] = record[k] == 0 && random() % 2 == 0 ? -0.0F : record[k];
    }
    records.push_back(record);
  }
  return records;
}

TEST(MeshFacts, AreThoseOfTheDefinitions) {
  std::mt19937 random(22);
  for (int i = 0; i < 3000; ++i) {
    const std::vector<StlRecord> records = randomMesh(random);
    const test::ReferenceMesh expected = test::referenceMesh(records);
    const MeshFacts facts = factsOfFile(records);
    ASSERT_EQ(facts.measure.triangles, records.size());
    ASSERT_EQ(facts.openEdges, expected.openEdges);
    ASSERT_EQ(facts.pieces, expected.pieces);
    ASSERT_EQ(facts.measure.degenerate, expected.degenerate);
    ASSERT_THAT(volumeOf(facts.measure), DoubleNear(expected.volume, 1e-12));
    ASSERT_THAT(facts.measure.area, DoubleNear(expected.area, 1e-12));
  }
}

}  // namespace
}  // namespace plenvorith
