#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "check/mesh_facts.h"
#include "tests/support/memory_file.h"
#include "tests/support/stl_file.h"

namespace plenvorith::test {

using Vertex = std::array<float, 3>;

inline StlRecord facet(const Vertex& a, const Vertex& b, const Vertex& c) {
  return {0, 0, 0, a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]};
}

/// The twelve triangles of a cube, seen from outside counter-clockwise.
inline std::vector<StlRecord> cubeAt(float x, float y, float z, float side = 1.0F) {
  const auto corner = [&](std::size_t i) {
    return Vertex{x + ((i & 1U) != 0 ? side : 0.0F), y + ((i & 2U) != 0 ? side : 0.0F),
                  z + ((i & 4U) != 0 ? side : 0.0F)};
  };
  constexpr std::array<std::array<std::size_t, 4>, 6> kSides = {
      {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}};
  std::vector<StlRecord> records;
  for (const auto& s : kSides) {
    records.push_back(facet(corner(s[0]), corner(s[1]), corner(s[2])));
    records.push_back(facet(corner(s[0]), corner(s[2]), corner(s[3])));
  }
  return records;
}

inline StlRecord flipped(StlRecord record) {
  for (std::size_t i = 0; i < 3; ++i) {
    std::swap(record[3 + i], record[6 + i]);
  }
  return record;
}

inline std::vector<StlRecord> together(std::vector<StlRecord> a, const std::vector<StlRecord>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// A band of 2 * `steps` triangles that is closed to a ring after half a turn.
inline std::vector<StlRecord> moebiusStrip(int steps) {
  const auto edge = [steps](int i, float side) {
    // After one turn the two edges have changed places.
    const float across = i == steps ? -side : side;
    const double turn = 2 * M_PI * (i % steps) / steps;
    const double radius = 10 + across * std::cos(turn / 2);
    return Vertex{static_cast<float>(radius * std::cos(turn)),
                  static_cast<float>(radius * std::sin(turn)),
                  static_cast<float>(across * std::sin(turn / 2))};
  };
  std::vector<StlRecord> records;
  for (int i = 0; i < steps; ++i) {
    records.push_back(facet(edge(i, -1), edge(i + 1, -1), edge(i + 1, 1)));
    records.push_back(facet(edge(i, -1), edge(i + 1, 1), edge(i, 1)));
  }
  return records;
}

/// The facts of a file that holds these triangles.
inline MeshFacts factsOfFile(const std::vector<StlRecord>& records) {
  MemoryFile file;
  MeshFacts facts;
  EXPECT_EQ(readMeshFacts(file.write(stlFile(records)), facts), "");
  return facts;
}

}  // namespace plenvorith::test
