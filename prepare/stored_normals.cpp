#include "prepare/stored_normals.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "exchange/body_cursor.h"
#include "prepare/coordinates.h"

namespace plenvorith {
namespace {

using Vector = std::array<double, 3>;

/// Some of the vectors of a list.
struct Vectors {
  std::vector<std::uint64_t> places;  // in the list, from 1, ascending
  std::vector<Vector> values;         // of the first of these places
  bool isSingle = false;              // the list holds no other one

  void want(const std::array<std::uint64_t, 3>& corners) {
    places.insert(places.end(), corners.begin(), corners.end());
  }
  void sort() {
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
  }
  /// Null if there is none.
  [[nodiscard]] const Vector* at(std::uint64_t place) const {
    const auto found = static_cast<std::size_t>(
        std::lower_bound(places.begin(), places.end(), place) - places.begin());
    return found < values.size() ? &values[found] : nullptr;
  }
};

/// Reads what is wanted of the list of vectors at the cursor, as far as that and the budget go.
void readVectors(BodyCursor& cursor, Vectors& vectors, std::uint64_t& budget) {
  if (!cursor.take('(')) {
    return;
  }
  std::uint64_t place = 0;
  do {
    if (budget == 0) {
      return;
    }
    --budget;
    ++place;
    if (place == vectors.places[vectors.values.size()]) {
      Vector value = {};
      (void)cursor.peek();
      const char* const end = readPoint(cursor.position(), cursor.end(), value);
      if (end == nullptr) {
        return;
      }
      cursor.moveTo(end);
      vectors.values.push_back(value);
    } else {
      cursor.skipParameter();
    }
  } while (vectors.values.size() < vectors.places.size() && cursor.take(','));
  vectors.isSingle = place == 1;
}

/// Goes to the normals of a face; false if it has none.
bool goToNormals(BodyCursor& cursor, const EntityType& type) {
  int before = 3;  // name, coordinates, pnmax
  if (type.isComplex) {
    before = 2;  // the name stands in a record of its own
    (void)cursor.take('(');
  }
  std::string keyword = cursor.takeKeyword();
  while (type.isComplex && keyword != "TESSELLATED_FACE" && keyword != "TESSELLATED_SURFACE_SET") {
    if (!cursor.skipRecord()) {
      return false;
    }
    keyword = cursor.takeKeyword();
  }
  bool isThere = cursor.take('(');
  for (int i = 0; i < before && isThere; ++i) {
    cursor.skipParameter();
    isThere = cursor.take(',');
  }
  return isThere && cursor.isAtItems();
}

/// The normal of a triangle times twice its area.
Vector areaNormal(const Vector& a, const Vector& b, const Vector& c) {
  const Vector u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const Vector v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

/// Above 0 where the normals of the corners are on the side of the triangle's own on the whole.
double agreementOf(const SampledTriangle& triangle, const Vectors& normals, const Vectors& points) {
  std::array<const Vector*, 3> corners = {};
  Vector sum = {};
  for (std::size_t i = 0; i < 3; ++i) {
    const Vector* const normal =
        normals.isSingle ? normals.values.data() : normals.at(triangle.normals[i]);
    corners[i] = points.at(triangle.points[i]);
    if (normal == nullptr || corners[i] == nullptr) {
      return 0.0;
    }
    for (std::size_t j = 0; j < 3; ++j) {
      sum[j] += (*normal)[j];
    }
  }
  const Vector own = areaNormal(*corners[0], *corners[1], *corners[2]);
  return own[0] * sum[0] + own[1] * sum[1] + own[2] * sum[2];
}

}  // namespace

NormalsVerdict compareNormals(StatementReader& reader, const InstanceTable& table,
                              InstanceIndex face, InstanceIndex coordinates,
                              const std::vector<SampledTriangle>& triangles,
                              std::uint64_t& budget) {
  Vectors normals;
  Vectors points;
  normals.places.push_back(1);  // perhaps the one for all
  for (const SampledTriangle& triangle : triangles) {
    normals.want(triangle.normals);
    points.want(triangle.points);
  }
  normals.sort();
  points.sort();
  if (points.places.empty()) {
    return NormalsVerdict::Unclear;
  }
  {
    reader.seekBody(table.offset(face));
    BodyCursor cursor(reader);
    if (!goToNormals(cursor, table.type(face))) {
      return NormalsVerdict::NoNormals;
    }
    readVectors(cursor, normals, budget);
  }
  {
    reader.seekBody(table.offset(coordinates));
    BodyCursor cursor(reader);
    if (goToPoints(cursor)) {
      readVectors(cursor, points, budget);
    }
  }
  if (budget == 0) {
    return NormalsVerdict::NotAgainst;
  }
  NormalsVerdict verdict = NormalsVerdict::Unclear;
  for (const SampledTriangle& triangle : triangles) {
    const double agreement = agreementOf(triangle, normals, points);
    if (agreement > 0) {
      return NormalsVerdict::NotAgainst;
    }
    verdict = agreement < 0 ? NormalsVerdict::Against : verdict;
  }
  return verdict;
}

}  // namespace plenvorith
