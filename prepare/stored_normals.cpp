#include "prepare/stored_normals.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "exchange/token_reader.h"
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

/// Reads what is wanted of the list of vectors at the tokens, as far as that and the budget go.
void readVectors(TokenReader& tokens, Vectors& vectors, std::uint64_t& budget) {
  if (!tokens.take('(')) {
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
      ListedPoint vector;
      if (!takePoint(tokens, vector)) {
        return;
      }
      vectors.values.push_back(vector.numbers);
    } else {
      tokens.skipParameter();
    }
  } while (vectors.values.size() < vectors.places.size() && tokens.take(','));
  vectors.isSingle = place == 1;
}

/// Goes to the normals of a face; false if it has none.
bool goToNormals(TokenReader& tokens, const EntityType& type) {
  // Of a complex instance the name stands in a record of its own.
  const bool isSet = std::find(type.keywords.begin(), type.keywords.end(),
                               "TESSELLATED_SURFACE_SET") != type.keywords.end();
  const std::string_view record = !type.isComplex ? std::string_view(type.keywords[0])
                                  : isSet         ? "TESSELLATED_SURFACE_SET"
                                                  : "TESSELLATED_FACE";
  return tokens.enterRecord(record, type.isComplex) &&
         tokens.skipParameters(type.isComplex ? 2 : 3) && tokens.isAtItems();
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
    TokenReader tokens(reader);
    if (!goToNormals(tokens, table.type(face))) {
      return NormalsVerdict::NoNormals;
    }
    readVectors(tokens, normals, budget);
  }
  {
    reader.seekBody(table.offset(coordinates));
    TokenReader tokens(reader);
    if (goToPoints(tokens, table.type(coordinates).isComplex)) {
      readVectors(tokens, points, budget);
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
