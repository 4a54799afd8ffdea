#include "check/edge_balance.h"

#include <vector>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

// A tetrahedron, seen from outside counter-clockwise.
const std::vector<Corners> kTetrahedron = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};

TEST(EdgeBalance, FindsTetrahedronClosed) {
  EXPECT_EQ(countOpenEdges(kTetrahedron, 4), 0U);
}

TEST(EdgeBalance, CountsTheSidesOfASingleTriangle) {
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{0, 1, 2}}, 3), 3U);
}

TEST(EdgeBalance, CountsEachSideOfTrianglesThatLookInOneDirectionOnly) {
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{0, 1, 2}, {0, 1, 2}}, 3), 6U);
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{0, 1, 2}, {0, 2, 1}}, 3), 0U);
}

TEST(EdgeBalance, CountsManyTrianglesAtOnePlace) {
  EXPECT_EQ(countOpenEdges(std::vector<Corners>(1000, Corners{0, 1, 2}), 3), 3000U);
}

TEST(EdgeBalance, PassesOverSidesWithoutLength) {
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{0, 0, 1}}, 2), 0U);
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{1, 1, 1}}, 2), 0U);
}

TEST(EdgeBalance, TakesTheHighestNumbers) {
  // The last bit of a side tells its direction, whatever the number.
  EXPECT_EQ(countOpenEdges(std::vector<Corners>{{0, 1, 2}, {2, 1, 0}}, 3), 0U);
  EXPECT_EQ(countOpenEdges({}, 0), 0U);
}

TEST(EdgeBalance, CountsPiecesThatShareNoPlace) {
  EXPECT_EQ(countPieces(kTetrahedron, 4), 1U);
  EXPECT_EQ(countPieces(std::vector<Corners>{{0, 1, 2}, {3, 4, 5}}, 6), 2U);
  EXPECT_EQ(countPieces(std::vector<Corners>{{0, 1, 2}, {3, 4, 5}, {2, 6, 3}}, 7), 1U);
  EXPECT_EQ(countPieces({}, 0), 0U);
}

}  // namespace
}  // namespace plenvorith
