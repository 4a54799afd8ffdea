#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "common/triangle.h"

namespace plenvorith::test {

inline Point3 operator-(const Point3& a, const Point3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Point3 cross(const Point3& a, const Point3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double dot(const Point3& a, const Point3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double length(const Point3& a) {
  return std::sqrt(dot(a, a));
}

inline double areaOf(const std::vector<Triangle>& triangles) {
  double area = 0.0;
  for (const Triangle& t : triangles) {
    area += length(cross(t.v2 - t.v1, t.v3 - t.v1)) / 2;
  }
  return area;
}

/// Of a closed mesh; negative if its corners run clockwise seen from outside.
inline double volumeOf(const std::vector<Triangle>& triangles) {
  double volume = 0.0;
  for (const Triangle& t : triangles) {
    volume += dot(t.v1, cross(t.v2, t.v3)) / 6;
  }
  return volume;
}

inline std::array<Point3, 3> cornersOf(const Triangle& triangle) {
  return {triangle.v1, triangle.v2, triangle.v3};
}

}  // namespace plenvorith::test
