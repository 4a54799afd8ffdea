#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "common/triangle.h"

namespace plenvorith::samples {

/// A mesh: its points, and its triangles as three numbers of points, counted from 1 and
/// counter-clockwise seen from outside.
struct Facets {
  std::vector<Point3> points;
  std::vector<std::array<std::size_t, 3>> triangles;
};

/// A closed tube along a trefoil knot.
Facets makeKnot();

/// A cut stone whose tip stands on top of the finger ring.
Facets makeGem();

}  // namespace plenvorith::samples
