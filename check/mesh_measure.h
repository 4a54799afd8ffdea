#pragma once

#include <cstdint>

#include "common/triangle.h"

namespace plenvorith {

/// What grows triangle by triangle. Lengths are in the unit of the mesh.
struct MeshMeasure {
  std::uint64_t triangles = 0;
  std::uint64_t degenerate = 0;  ///< triangles without area
  double area = 0.0;
  double sixfoldVolume = 0.0;  ///< negative if the corners run clockwise seen from outside
  Point3 low;                  ///< bounds, once there are triangles
  Point3 high;
  Point3 start;          ///< the first vertex: volumes are measured from here
  Point3 sixfoldMoment;  ///< of the volume, about `start`
};

/// Adds the triangle of three corners.
///
/// The volume is the sum of the tetrahedra over the triangles with their tops at the mesh's first
/// vertex, so that it loses no digits far from the origin. Of an open mesh it means little.
void addTriangle(MeshMeasure& measure, const Point3& v1, const Point3& v2, const Point3& v3);

/// What the mesh encloses.
double volumeOf(const MeshMeasure& measure);

/// The centre of gravity of what the mesh encloses; the middle of the bounds if it has no volume.
Point3 centroidOf(const MeshMeasure& measure);

}  // namespace plenvorith
