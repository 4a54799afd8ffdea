#include "tests/reference/reference_face_decoder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include "tests/reference/reference_step_cursor.h"

namespace plenvorith::test {
namespace {

struct StripFace {
  std::string coordinates;
  std::vector<IndexTriple> triples;
};

bool isFace(const std::string& text) {
  return text.substr(0, 26) == "COMPLEX_TRIANGULATED_FACE(";
}

void skipGroupIfAny(StepCursor& cursor) {
  if (referenceNextIs(cursor, '(')) {
    referenceSkipParenthesisedGroup(cursor);
  }
}

StripFace scanFace(const std::string& parameters) {
  StepCursor cursor{parameters};
  StripFace face;
  referenceSkipQuotedString(cursor);
  referenceConsumeIf(cursor, ',');
  face.coordinates = referenceParseReference(cursor);
  referenceConsumeIf(cursor, ',');
  referenceParseNumber(cursor);
  referenceConsumeIf(cursor, ',');
  skipGroupIfAny(cursor);
  referenceConsumeIf(cursor, ',');
  if (referenceNextIs(cursor, '#')) {
    referenceParseReference(cursor);
  } else {
    referenceConsumeIf(cursor, '$');
  }
  referenceConsumeIf(cursor, ',');
  skipGroupIfAny(cursor);
  referenceConsumeIf(cursor, ',');
  face.triples = referenceParseIndexTriples(cursor);
  return face;
}

std::vector<Point3> scanPoints(const std::string& text) {
  if (text.size() < 17) {
    throw std::out_of_range("invalid string position");
  }
  const std::string parameters = text.substr(17);
  StepCursor cursor{parameters};
  referenceSkipQuotedString(cursor);
  referenceConsumeIf(cursor, ',');
  referenceParseNumber(cursor);
  referenceConsumeIf(cursor, ',');
  return referenceParsePointList(cursor);
}

Triangle triangleOf(const Point3& p1, const Point3& p2, const Point3& p3) {
  const double e1x = p2.x - p1.x;
  const double e1y = p2.y - p1.y;
  const double e1z = p2.z - p1.z;
  const double e2x = p3.x - p1.x;
  const double e2y = p3.y - p1.y;
  const double e2z = p3.z - p1.z;
  double nx = e1y * e2z - e1z * e2y;
  double ny = e1z * e2x - e1x * e2z;
  double nz = e1x * e2y - e1y * e2x;
  const double length = std::sqrt(nx * nx + ny * ny + nz * nz);
  if (length > 1e-12) {
    nx /= length;
    ny /= length;
    nz /= length;
  }
  return {{nx, ny, nz}, p1, p2, p3};
}

}  // namespace

std::vector<Triangle> referenceDecode(const EntityTexts& table, const InstanceNames& faceIds) {
  std::vector<Triangle> triangles;
  std::map<std::string, std::vector<Point3>> cache;
  for (const std::string& name : faceIds) {
    const auto entry = table.find(name);
    if (entry == table.end() || !isFace(entry->second)) {
      continue;
    }
    const StripFace face = scanFace(entry->second.substr(26));
    if (cache.count(face.coordinates) == 0) {
      const auto coordinates = table.find(face.coordinates);
      if (coordinates == table.end()) {
        continue;
      }
      cache[face.coordinates] = scanPoints(coordinates->second);
    }
    const std::vector<Point3>& points = cache[face.coordinates];
    const auto count = static_cast<std::int64_t>(points.size());
    for (const auto& [i, j, k] : face.triples) {
      if (i < 1 || j < 1 || k < 1 || i > count || j > count || k > count) {
        continue;
      }
      triangles.push_back(triangleOf(points[static_cast<std::size_t>(i) - 1],
                                     points[static_cast<std::size_t>(j) - 1],
                                     points[static_cast<std::size_t>(k) - 1]));
    }
  }
  return triangles;
}

std::vector<Triangle> referenceDecodeAll(const EntityTexts& table) {
  InstanceNames faces;
  for (const auto& [name, text] : table) {
    if (isFace(text)) {
      faces.insert(name);
    }
  }
  return referenceDecode(table, faces);
}

}  // namespace plenvorith::test
