#pragma once

#include <type_traits>

namespace plenvorith {

/// A point or a vector, in the length unit of the file that it comes from.
struct Point3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

/// One facet of a mesh. The STL writer stores the twelve numbers in this order and as they are.
struct Triangle {
  Point3 normal;  ///< Of unit length, except for a degenerate triangle: see `makeTriangle`.
  Point3 v1;
  Point3 v2;
  Point3 v3;
};
static_assert(sizeof(Triangle) == 12 * sizeof(double) && std::is_trivially_copyable_v<Triangle>);

/// Makes the triangle of three corners, taken in this order, and computes its normal.
///
/// Gives  normal = (p2 - p1) x (p3 - p1), divided by its length only where that length is greater
///        than 1e-12. The normal of a degenerate triangle stays the raw, near-zero cross product.
Triangle makeTriangle(const Point3& p1, const Point3& p2, const Point3& p3);

}  // namespace plenvorith
