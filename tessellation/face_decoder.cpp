#include "tessellation/face_decoder.h"

#include <algorithm>
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

/// A face, scanned up to its triangle strips.
struct Face {
  std::string_view coordinates;  // the name of the coordinates list; empty if the face names none
  StepCursor strips;
  NumberError error = NumberError::None;  // met on the way
};

bool isFace(std::string_view text) {
  return text.starts_with(kFaceStart);
}

void skipGroupIfNext(StepCursor& cursor) {
  if (nextIs(cursor, '(')) {
    skipParenthesisedGroup(cursor);
  }
}

/// A cursor at the first parameter of an entity, behind the `start` of its text.
StepCursor parametersOf(std::string_view text, std::string_view start) {
  return {text.substr(start.size()), 0, TextArena::kReadable};
}

/// Scans the parameters of a face, by their positions.
Face scanFace(std::string_view text) {
  StepCursor cursor = parametersOf(text, kFaceStart);
  Face face;
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  face.coordinates = parseReference(cursor);
  consumeIf(cursor, ',');
  double pnmax = 0.0;
  face.error = scanNumber(cursor, pnmax);
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
  face.strips = cursor;
  return face;
}

/// Scans the parameters of a coordinates list. The type of the entity is not looked at: whatever a
/// face references is read like a coordinates list.
std::vector<Point3> parseCoordinates(std::string_view text) {
  if (text.size() < kCoordinatesStart.size()) {
    throw std::out_of_range("invalid string position");
  }
  StepCursor cursor = parametersOf(text, kCoordinatesStart);
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  parseNumber(cursor);  // number of points
  consumeIf(cursor, ',');
  return parsePointList(cursor);
}

/// The coordinates lists that faces name, each read once.
class Coordinates {
 public:
  explicit Coordinates(const EntityTable& table) : table_(table), last_(table.end()) {}

  /// The points of the list `name`; null if the table holds no such entity.
  const std::vector<Point3>* find(std::string_view name) {
    // Faces mostly name their lists in the order of the names: one behind all others is a new one.
    if (!points_.empty() && name <= points_.rbegin()->first) {
      const auto points = points_.find(name);
      if (points != points_.end()) {
        return &points->second;
      }
    }
    const auto entity = findEntity(name);
    if (entity == table_.end()) {
      return nullptr;
    }
    last_ = entity;
    return &points_.emplace_hint(points_.end(), name, parseCoordinates(entity->second))->second;
  }

 private:
  /// Mostly it is right behind the last one, too. That saves a search through the whole table,
  /// which takes as long as the decoding of a small face.
  EntityTable::Iterator findEntity(std::string_view name) const {
    auto near = last_;
    for (int steps = 0; steps < 3 && near != table_.end(); ++steps, ++near) {
      if (near->first == name) {
        return near;
      }
    }
    return table_.find(name);
  }

  const EntityTable& table_;
  EntityTable::Iterator last_;  // that was found
  std::map<std::string_view, std::vector<Point3>> points_;
};

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

std::vector<Triangle> decode(const EntityTable& table, const std::vector<Face>& faces) {
  std::size_t maxCount = 0;
  for (const Face& face : faces) {
    maxCount +=
        maxTripleCount(face.strips.text.substr(std::min(face.strips.pos, face.strips.text.size())));
  }
  // The triangles are by far the largest part of the memory. With room for all of them they need
  // not grow by copying; what is not used of it is never touched.
  std::vector<Triangle> triangles;
  reserveLarge(triangles, maxCount);
  Coordinates coordinates(table);
  for (const Face& face : faces) {
    if (face.error != NumberError::None) {
      throwNumberError(face.error);
    }
    StepCursor cursor = face.strips;
    const std::vector<IndexTriple> triples = parseIndexTriples(cursor);
    if (const auto* points = coordinates.find(face.coordinates)) {
      appendTriangles(triangles, *points, triples);
    }
  }
  return triangles;
}

}  // namespace

std::vector<Triangle> decodeTriangulatedFaces(const EntityTable& table,
                                              const InstanceNames& faceIds) {
  std::vector<Face> faces;
  for (const std::string& faceId : faceIds) {
    const auto entity = table.find(faceId);
    if (entity != table.end() && isFace(entity->second)) {
      faces.push_back(scanFace(entity->second));
    }
  }
  return decode(table, faces);
}

std::vector<Triangle> decodeAllTriangulatedFaces(const EntityTable& table) {
  std::vector<Face> faces;
  for (const auto& [name, text] : table) {
    if (isFace(text)) {
      faces.push_back(scanFace(text));
    }
  }
  return decode(table, faces);
}

}  // namespace plenvorith
