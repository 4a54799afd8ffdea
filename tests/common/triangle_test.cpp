#include "common/triangle.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

void expectPoint(const Point3& point, double x, double y, double z) {
  EXPECT_EQ(point.x, x);
  EXPECT_EQ(point.y, y);
  EXPECT_EQ(point.z, z);
}

TEST(MakeTriangle, KeepsTheCornersInTheirOrder) {
  const Triangle t = makeTriangle({1, 2, 3}, {4, 5, 6}, {7, 8, 10});
  expectPoint(t.v1, 1, 2, 3);
  expectPoint(t.v2, 4, 5, 6);
  expectPoint(t.v3, 7, 8, 10);
}

TEST(MakeTriangle, NormalFollowsTheOrderOfTheCorners) {
  expectPoint(makeTriangle({0, 0, 0}, {5, 0, 0}, {0, 3, 0}).normal, 0, 0, 1);
  expectPoint(makeTriangle({0, 0, 0}, {0, 3, 0}, {5, 0, 0}).normal, 0, 0, -1);
  expectPoint(makeTriangle({0, 0, 0}, {0, 2, 0}, {0, 0, 2}).normal, 1, 0, 0);
  expectPoint(makeTriangle({0, 0, 0}, {0, 0, 2}, {2, 0, 0}).normal, 0, 1, 0);
}

TEST(MakeTriangle, NormalOfCoincidentOrCollinearCornersIsZero) {
  expectPoint(makeTriangle({1, 1, 1}, {1, 1, 1}, {2, 3, 4}).normal, 0, 0, 0);
  expectPoint(makeTriangle({0, 0, 0}, {1, 0, 0}, {3, 0, 0}).normal, 0, 0, 0);
}

TEST(MakeTriangle, NormalIsNotScaledUpToALengthOf1eMinus12) {
  expectPoint(makeTriangle({0, 0, 0}, {1e-12, 0, 0}, {0, 1, 0}).normal, 0, 0, 1e-12);
  expectPoint(makeTriangle({0, 0, 0}, {5e-13, 0, 0}, {0, 1, 0}).normal, 0, 0, 5e-13);
  const double above = std::nextafter(1e-12, 1.0);
  expectPoint(makeTriangle({0, 0, 0}, {above, 0, 0}, {0, 1, 0}).normal, 0, 0, 1);
}

TEST(MakeTriangle, NormalOfAnInfiniteCornerIsNotANumberAndStays) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Triangle t = makeTriangle({0, 0, 0}, {infinity, 0, 0}, {0, 1, 0});
  EXPECT_TRUE(std::isnan(t.normal.y));
  EXPECT_EQ(t.v2.x, infinity);
}

}  // namespace
}  // namespace plenvorith
