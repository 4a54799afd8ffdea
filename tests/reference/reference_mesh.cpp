#include "tests/reference/reference_mesh.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace plenvorith::test {
namespace {

using Vertex = std::array<float, 3>;  // compared by value: the two zeros are one
using Facet = std::array<Vertex, 3>;

std::vector<Facet> facetsOf(const std::vector<StlRecord>& records) {
  std::vector<Facet> facets;
  facets.reserve(records.size());
  for (const StlRecord& r : records) {
    facets.push_back({{{r[3], r[4], r[5]}, {r[6], r[7], r[8]}, {r[9], r[10], r[11]}}});
  }
  return facets;
}

std::uint64_t openEdgesOf(const std::vector<Facet>& facets) {
  std::map<std::pair<Vertex, Vertex>, std::uint64_t> sides;
  for (const Facet& facet : facets) {
    for (std::size_t i = 0; i < 3; ++i) {
      ++sides[{facet[i], facet[(i + 1) % 3]}];
    }
  }
  std::uint64_t open = 0;
  for (const auto& [side, count] : sides) {
    const auto twins = sides.find({side.second, side.first});
    const std::uint64_t opposite = twins == sides.end() ? 0 : twins->second;
    open += count > opposite ? count - opposite : 0;
  }
  return open;
}

std::uint64_t piecesOf(const std::vector<Facet>& facets) {
  std::vector<std::set<Vertex>> pieces;
  for (const Facet& facet : facets) {
    std::set<Vertex> joined(facet.begin(), facet.end());
    std::vector<std::set<Vertex>> others;
    for (const std::set<Vertex>& piece : pieces) {
      if (piece.count(facet[0]) + piece.count(facet[1]) + piece.count(facet[2]) > 0) {
        joined.insert(piece.begin(), piece.end());
      } else {
        others.push_back(piece);
      }
    }
    others.push_back(joined);
    pieces = others;
  }
  return pieces.size();
}

/// Twice the area, as a vector.
std::array<long double, 3> areaVectorOf(const Facet& f) {
  std::array<long double, 3> a{};
  std::array<long double, 3> b{};
  for (std::size_t i = 0; i < 3; ++i) {
    a[i] = static_cast<long double>(f[1][i]) - f[0][i];
    b[i] = static_cast<long double>(f[2][i]) - f[0][i];
  }
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace

ReferenceMesh referenceMesh(const std::vector<StlRecord>& records) {
  const std::vector<Facet> facets = facetsOf(records);
  ReferenceMesh mesh{openEdgesOf(facets), 0, piecesOf(facets), 0.0, 0.0};
  long double volume = 0.0;
  long double area = 0.0;
  for (const Facet& facet : facets) {
    const auto normal = areaVectorOf(facet);
    const long double twice =
        std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    mesh.degenerate += twice == 0.0L ? 1 : 0;
    area += twice / 2;
    for (std::size_t i = 0; i < 3; ++i) {
      // Of an open mesh the volume depends on the point that it is measured from.
      volume += (static_cast<long double>(facet[0][i]) - facets[0][0][i]) * normal[i] / 6;
    }
  }
  mesh.volume = static_cast<double>(volume);
  mesh.area = static_cast<double>(area);
  return mesh;
}

}  // namespace plenvorith::test
