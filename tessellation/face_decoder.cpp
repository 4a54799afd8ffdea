#include "tessellation/face_decoder.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/reserve.h"
#include "tessellation/step_cursor.h"
#include "tessellation/triple_list.h"

namespace plenvorith {
namespace {

constexpr std::string_view kFaceStart = "COMPLEX_TRIANGULATED_FACE(";
constexpr std::string_view kCoordinatesStart = "COORDINATES_LIST(";

/// A face, scanned up to its triangle strips.
struct Face {
  EntityTable::Iterator coordinates;  // the end of the table if the face names no entity of it
  bool sharesCoordinates = false;     // with another face
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
  return {text, start.size(), TextArena::kReadable};
}

/// Looks for the coordinates lists that faces name. Mostly one is right behind the list of the face
/// before, as the table is ordered; that saves a search through all of it, which takes as long as
/// the decoding of a small face.
class CoordinatesFinder {
 public:
  explicit CoordinatesFinder(const EntityTable& table) : table_(table), last_(table.end()) {}

  EntityTable::Iterator find(std::string_view name) {
    auto near = last_;
    for (int steps = 0; steps < 3 && near != table_.end(); ++steps, ++near) {
      if (near->first == name) {
        last_ = near;
        return near;
      }
    }
    const auto entity = table_.find(name);
    last_ = entity == table_.end() ? last_ : entity;
    return entity;
  }

 private:
  const EntityTable& table_;
  EntityTable::Iterator last_;  // that was found
};

/// Scans the parameters of a face, by their positions.
Face scanFace(std::string_view text, CoordinatesFinder& finder) {
  StepCursor cursor = parametersOf(text, kFaceStart);
  Face face;
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  face.coordinates = finder.find(parseReference(cursor));
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

/// The points of a coordinates list, or why there are none.
struct PointList {
  std::vector<Point3> points;
  NumberError error = NumberError::None;
  bool isTooShort = false;      // for its keyword
  std::size_t longestText = 0;  // for whose points there is room
};

/// Scans the parameters of a coordinates list into `list`, whose memory is used again. The type of
/// the entity is not looked at: whatever a face references is read like a coordinates list.
void readPointList(std::string_view text, PointList& list) {
  list.points.clear();
  list.isTooShort = text.size() < kCoordinatesStart.size();
  if (list.isTooShort) {
    return;
  }
  StepCursor cursor = parametersOf(text, kCoordinatesStart);
  skipQuotedString(cursor);  // name
  consumeIf(cursor, ',');
  double count = 0.0;  // of points, as written
  list.error = scanNumber(cursor, count);
  if (list.error != NumberError::None) {
    return;
  }
  consumeIf(cursor, ',');
  if (text.size() > list.longestText) {
    reserveLarge(list.points, maxTripleCount(restOf(cursor)));
    list.longestText = text.size();
  }
  list.error = scanPointList(cursor, list.points);
}

/// Finds the faces that name the same coordinates list as another one does.
void markSharedCoordinates(std::vector<Face>& faces, EntityTable::Iterator none) {
  // A hash table of faces, one for each list, by their numbers from 1 on; 0 is a free place, as at
  // least half of them stay. The multiplication scatters addresses, which lie side by side.
  const auto sizeBits = static_cast<int>(std::bit_width(2 * faces.size() + 1));
  std::vector<std::uint32_t> users(std::size_t{1} << sizeBits);
  std::uint32_t number = 0;
  for (Face& face : faces) {
    ++number;
    if (face.coordinates == none) {
      continue;
    }
    const auto address =
        static_cast<std::uint64_t>(std::bit_cast<std::uintptr_t>(&*face.coordinates));
    std::size_t place = address * 0x9E3779B97F4A7C15U >> (64 - sizeBits);
    while (users[place] != 0 && faces[users[place] - 1].coordinates != face.coordinates) {
      place = (place + 1) % users.size();
    }
    if (users[place] == 0) {
      users[place] = number;
    } else {
      faces[users[place] - 1].sharesCoordinates = true;
      face.sharesCoordinates = true;
    }
  }
}

/// The coordinates lists that faces name, each read once.
///
/// Most lists belong to one face. Their points are there until the next list is read, so that all of
/// them take the memory of one; only those that other faces need, too, are kept.
class Coordinates {
 public:
  /// The points of a face's list, valid until the next call.
  const PointList& read(const Face& face) {
    const auto& [name, text] = *face.coordinates;
    if (!face.sharesCoordinates) {
      readPointList(text, current_);
      return current_;
    }
    const auto [list, isNew] = kept_.try_emplace(name);
    if (isNew) {
      readPointList(text, list->second);
    }
    return list->second;
  }

 private:
  PointList current_;
  std::map<std::string_view, PointList> kept_;
};

/// Makes the triangles of a face while it reads their indices: the one waits for the memory, the
/// other for what it has just read.
NumberError appendTriangles(std::vector<Triangle>& triangles, const std::vector<Point3>& points,
                            StepCursor strips) {
  const auto isPoint = [size = points.size()](std::int32_t index) {
    return index >= 1 && static_cast<std::size_t>(index) <= size;
  };
  const auto point = [first = points.data()](std::int32_t index) -> const Point3& {
    return first[static_cast<std::size_t>(index) - 1];
  };
  return scanIndexTriples(strips, [&](const IndexTriple& triple) {
    if (isPoint(triple.i) && isPoint(triple.j) && isPoint(triple.k)) {
      triangles.push_back(makeTriangle(point(triple.i), point(triple.j), point(triple.k)));
    }
  });
}

std::vector<Triangle> decode(const EntityTable& table, std::vector<Face> faces) {
  std::size_t maxCount = 0;
  for (const Face& face : faces) {
    maxCount += maxTripleCount(restOf(face.strips));
  }
  // The triangles are by far the largest part of the memory. With room for all of them they need
  // not grow by copying; what is not used of it is never touched.
  std::vector<Triangle> triangles;
  reserveLarge(triangles, maxCount);
  markSharedCoordinates(faces, table.end());
  Coordinates coordinates;
  const PointList none;
  for (const Face& face : faces) {
    if (face.error != NumberError::None) {
      throwNumberError(face.error);
    }
    const PointList& list = face.coordinates == table.end() ? none : coordinates.read(face);
    // Errors are raised in the order of the face's parameters: its indices come before its points.
    if (const NumberError error = appendTriangles(triangles, list.points, face.strips);
        error != NumberError::None) {
      throwNumberError(error);
    }
    if (list.isTooShort) {
      throw std::out_of_range("invalid string position");
    }
    if (list.error != NumberError::None) {
      throwNumberError(list.error);
    }
  }
  return triangles;
}

}  // namespace

std::vector<Triangle> decodeTriangulatedFaces(const EntityTable& table,
                                              const InstanceNames& faceIds) {
  std::vector<Face> faces;
  reserveLarge(faces, faceIds.size());
  CoordinatesFinder finder(table);
  for (const std::string& faceId : faceIds) {
    const auto entity = table.find(faceId);
    if (entity != table.end() && isFace(entity->second)) {
      faces.push_back(scanFace(entity->second, finder));
    }
  }
  return decode(table, std::move(faces));
}

std::vector<Triangle> decodeAllTriangulatedFaces(const EntityTable& table) {
  std::vector<Face> faces;
  reserveLarge(faces, table.size());
  CoordinatesFinder finder(table);
  for (const auto& [name, text] : table) {
    if (isFace(text)) {
      faces.push_back(scanFace(text, finder));
    }
  }
  return decode(table, std::move(faces));
}

}  // namespace plenvorith
