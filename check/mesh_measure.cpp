#include "check/mesh_measure.h"

#include <algorithm>
#include <cmath>

namespace plenvorith {
namespace {

Point3 difference(const Point3& a, const Point3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Point3 cross(const Point3& a, const Point3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double dot(const Point3& a, const Point3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

void addToBounds(MeshMeasure& measure, const Point3& point) {
  Point3& low = measure.low;
  Point3& high = measure.high;
  low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
  high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
}

}  // namespace

void addTriangle(MeshMeasure& measure, const Point3& v1, const Point3& v2, const Point3& v3) {
  if (measure.triangles == 0) {
    measure.start = measure.low = measure.high = v1;
  }
  ++measure.triangles;
  addToBounds(measure, v1);
  addToBounds(measure, v2);
  addToBounds(measure, v3);

  const Point3 normal = cross(difference(v2, v1), difference(v3, v1));
  const double twiceArea = std::sqrt(dot(normal, normal));
  if (twiceArea == 0.0) {
    ++measure.degenerate;
  }
  measure.area += twiceArea / 2;

  const Point3 a = difference(v1, measure.start);
  const Point3 b = difference(v2, measure.start);
  const Point3 c = difference(v3, measure.start);
  const double sixfold = dot(a, normal);
  measure.sixfoldVolume += sixfold;
  // The centre of a tetrahedron is the mean of its four corners, one of which is the start.
  measure.sixfoldMoment.x += sixfold * (a.x + b.x + c.x) / 4;
  measure.sixfoldMoment.y += sixfold * (a.y + b.y + c.y) / 4;
  measure.sixfoldMoment.z += sixfold * (a.z + b.z + c.z) / 4;
}

double volumeOf(const MeshMeasure& measure) {
  return measure.sixfoldVolume / 6;
}

Point3 centroidOf(const MeshMeasure& measure) {
  if (measure.sixfoldVolume == 0.0) {
    return {(measure.low.x + measure.high.x) / 2, (measure.low.y + measure.high.y) / 2,
            (measure.low.z + measure.high.z) / 2};
  }
  return {measure.start.x + measure.sixfoldMoment.x / measure.sixfoldVolume,
          measure.start.y + measure.sixfoldMoment.y / measure.sixfoldVolume,
          measure.start.z + measure.sixfoldMoment.z / measure.sixfoldVolume};
}

}  // namespace plenvorith
