#include "tessellation/face_decoder.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/reserve.h"
#include "tessellation/step_cursor.h"

namespace plenvorith {
namespace {

constexpr std::string_view kFaceStart = "COMPLEX_TRIANGULATED_FACE(";
constexpr std::string_view kCoordinatesStart = "COORDINATES_LIST(";

/// The points of every coordinates list met so far, by the reference that names it.
using CoordinatesCache = std::map<std::string, std::vector<Point3>>;

struct Face {
  std::string coordinates;  // the name of the coordinates list; empty if the face names none
  std::vector<IndexTriple> triples;
};

bool isFace(std::string_view text) {
  return text.starts_with(kFaceStart);
}

void skipGroupIfNext(StepCursor& cursor) {
  if (nextIs(cursor, '(')) {
    skipParenthesisedGroup(cursor);
  }
}

/// Scans the parameters of a face, by their positions.
Face parseFace(std::string_view text) {
  StepCursor cursor{text.substr(kFaceStart.size())};
  Face face;
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  face.coordinates = parseReference(cursor);
  consumeIf(cursor, ',');
  parseNumber(cursor);  // pnmax
  consumeIf(cursor, ',');
  skipGroupIfNext(cursor);  // normals
  consumeIf(cursor, ',');
  if (nextIs(cursor, '#')) {  // geometric link
    parseReference(cursor);
  } else {
    consumeIf(cursor, '$');
  }
  consumeIf(cursor, ',');
  skipGroupIfNext(cursor);  // pnindex
  consumeIf(cursor, ',');
  face.triples = parseIndexTriples(cursor);
  return face;
}

/// Scans the parameters of a coordinates list. The type of the entity is not looked at: whatever a
/// face references is read like a coordinates list.
std::vector<Point3> parseCoordinates(std::string_view text) {
  if (text.size() < kCoordinatesStart.size()) {
    throw std::out_of_range("invalid string position");
  }
  StepCursor cursor{text.substr(kCoordinatesStart.size())};
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  parseNumber(cursor);  // number of points
  consumeIf(cursor, ',');
  return parsePointList(cursor);
}

/// The points of the coordinates list `name`; null if the table holds no such entity.
const std::vector<Point3>* findPoints(const EntityTable& table, const std::string& name,
                                      CoordinatesCache& cache) {
  const auto cached = cache.find(name);
  if (cached != cache.end()) {
    return &cached->second;
  }
  const auto entity = table.find(name);
  if (entity == table.end()) {
    return nullptr;
  }
  return &cache.emplace(name, parseCoordinates(entity->second)).first->second;
}

void appendTriangles(std::vector<Triangle>& triangles, const std::vector<Point3>& points,
                     const std::vector<IndexTriple>& triples) {
  const auto isPoint = [&points](std::int32_t index) {
    return index >= 1 && static_cast<std::size_t>(index) <= points.size();
  };
  const auto point = [&points](std::int32_t index) -> const Point3& {
    return points[static_cast<std::size_t>(index) - 1];
  };
  for (const auto& [i, j, k] : triples) {
    if (isPoint(i) && isPoint(j) && isPoint(k)) {
      triangles.push_back(makeTriangle(point(i), point(j), point(k)));
    }
  }
}

std::vector<Triangle> decode(const EntityTable& table, const std::vector<std::string_view>& faces) {
  std::size_t maxCount = 0;
  for (const std::string_view text : faces) {
    maxCount += maxTripleCount(text);
  }
  // The triangles are by far the largest part of the memory. With room for all of them they need
  // not grow by copying; what is not used of it is never touched.
  std::vector<Triangle> triangles;
  reserveLarge(triangles, maxCount);
  CoordinatesCache cache;
  for (const std::string_view text : faces) {
    const Face face = parseFace(text);
    if (const auto* points = findPoints(table, face.coordinates, cache)) {
      appendTriangles(triangles, *points, face.triples);
    }
  }
  return triangles;
}

}  // namespace

std::vector<Triangle> decodeTriangulatedFaces(const EntityTable& table,
                                              const InstanceNames& faceIds) {
  std::vector<std::string_view> faces;
  for (const std::string& faceId : faceIds) {
    const auto entity = table.find(faceId);
    if (entity != table.end() && isFace(entity->second)) {
      faces.push_back(entity->second);
    }
  }
  return decode(table, faces);
}

std::vector<Triangle> decodeAllTriangulatedFaces(const EntityTable& table) {
  std::vector<std::string_view> faces;
  for (const auto& [name, text] : table) {
    if (isFace(text)) {
      faces.push_back(text);
    }
  }
  return decode(table, faces);
}

}  // namespace plenvorith
