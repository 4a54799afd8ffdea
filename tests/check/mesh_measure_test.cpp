#include "check/mesh_measure.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

using testing::DoubleEq;
using testing::DoubleNear;

MeshMeasure measureOf(const std::vector<Point3>& vertices) {
  MeshMeasure measure;
  for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
    addTriangle(measure, vertices[i], vertices[i + 1], vertices[i + 2]);
  }
  return measure;
}

/// A tetrahedron with three edges of 6, 12 and 24 along the axes.
MeshMeasure tetrahedronAt(const Point3& corner) {
  const Point3 x = {corner.x + 6, corner.y, corner.z};
  const Point3 y = {corner.x, corner.y + 12, corner.z};
  const Point3 z = {corner.x, corner.y, corner.z + 24};
  return measureOf({corner, y, x, corner, x, z, x, y, z, y, corner, z});
}

TEST(MeshMeasure, OfATetrahedronIsThatOfItsFormulas) {
  const MeshMeasure measure = tetrahedronAt({0, 0, 0});
  EXPECT_EQ(measure.triangles, 4U);
  EXPECT_EQ(measure.degenerate, 0U);
  EXPECT_THAT(volumeOf(measure), DoubleEq(6.0 * 12 * 24 / 6));
  // The fourth side is half of what three of these products come to in space.
  EXPECT_THAT(measure.area,
              DoubleEq((6 * 12 + 12 * 24 + 24 * 6 + std::hypot(6 * 12, 12 * 24, 24 * 6)) / 2));
  const Point3 centroid = centroidOf(measure);
  EXPECT_THAT(centroid.x, DoubleEq(1.5));
  EXPECT_THAT(centroid.y, DoubleEq(3));
  EXPECT_THAT(centroid.z, DoubleEq(6));
  EXPECT_EQ(measure.low.x, 0);
  EXPECT_EQ(measure.low.y, 0);
  EXPECT_EQ(measure.low.z, 0);
  EXPECT_EQ(measure.high.x, 6);
  EXPECT_EQ(measure.high.y, 12);
  EXPECT_EQ(measure.high.z, 24);
}

TEST(MeshMeasure, KeepsItsDigitsFarFromTheOrigin) {
  const MeshMeasure measure = tetrahedronAt({1e7, -2e7, 3e7});
  EXPECT_THAT(volumeOf(measure), DoubleEq(288));
  const Point3 centroid = centroidOf(measure);
  EXPECT_THAT(centroid.x, DoubleNear(1e7 + 1.5, 1e-7));
  EXPECT_THAT(centroid.y, DoubleNear(-2e7 + 3, 1e-7));
  EXPECT_THAT(centroid.z, DoubleNear(3e7 + 6, 1e-7));
  EXPECT_EQ(measure.low.x, 1e7);
  EXPECT_EQ(measure.high.y, -2e7 + 12);
}

TEST(MeshMeasure, OfWhatEnclosesNothingHasItsCentreAmidItsBounds) {
  const Point3 centroid = centroidOf(measureOf({{1, 2, 3}, {5, 2, 3}, {1, 4, 9}}));
  EXPECT_THAT(centroid.x, DoubleEq(3));
  EXPECT_THAT(centroid.y, DoubleEq(3));
  EXPECT_THAT(centroid.z, DoubleEq(6));
}

TEST(MeshMeasure, CountsAsDegenerateWhatHasNoAreaAtAll) {
  EXPECT_EQ(measureOf({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}).degenerate, 1U);
  const MeshMeasure thin = measureOf({{0, 0, 0}, {1, 0, 0}, {0, 1e-30, 0}});
  EXPECT_EQ(thin.degenerate, 0U);
  EXPECT_THAT(thin.area, DoubleEq(0.5e-30));
}

}  // namespace
}  // namespace plenvorith
