#pragma once

#include <ostream>

#include "common/triangle.h"
#include "tessellation/step_cursor.h"

namespace plenvorith {

// What GoogleTest needs to compare the records and to print them.

inline bool operator==(const Point3& a, const Point3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline std::ostream& operator<<(std::ostream& out, const Point3& point) {
  return out << "(" << point.x << ", " << point.y << ", " << point.z << ")";
}

inline bool operator==(const IndexTriple& a, const IndexTriple& b) {
  return a.i == b.i && a.j == b.j && a.k == b.k;
}

inline std::ostream& operator<<(std::ostream& out, const IndexTriple& triple) {
  return out << "(" << triple.i << ", " << triple.j << ", " << triple.k << ")";
}

inline bool operator==(const Triangle& a, const Triangle& b) {
  return a.normal == b.normal && a.v1 == b.v1 && a.v2 == b.v2 && a.v3 == b.v3;
}

inline std::ostream& operator<<(std::ostream& out, const Triangle& triangle) {
  return out << triangle.normal << ": " << triangle.v1 << " " << triangle.v2 << " " << triangle.v3;
}

}  // namespace plenvorith
