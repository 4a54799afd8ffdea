#include "common/triangle.h"

#include <cmath>

namespace plenvorith {
namespace {

Point3 difference(const Point3& a, const Point3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

}  // namespace

Triangle makeTriangle(const Point3& p1, const Point3& p2, const Point3& p3) {
  const Point3 e1 = difference(p2, p1);
  const Point3 e2 = difference(p3, p1);
  Point3 n{e1.y * e2.z - e1.z * e2.y, e1.z * e2.x - e1.x * e2.z, e1.x * e2.y - e1.y * e2.x};
  const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
  // A length that is not a number compares false and leaves the normal as computed, too.
  if (length > 1e-12) {
    n.x /= length;
    n.y /= length;
    n.z /= length;
  }
  return {n, p1, p2, p3};
}

}  // namespace plenvorith
