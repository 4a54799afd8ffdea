#include "check/mesh_identity.h"

#include <bit>
#include <cstddef>
#include <cstdint>

#include "check/stl_reader.h"

namespace plenvorith {
namespace {

bool isSame(const StlTriangle& stored, const Triangle& triangle) {
  std::size_t i = 0;
  for (const Point3* point : {&triangle.normal, &triangle.v1, &triangle.v2, &triangle.v3}) {
    for (const double coordinate : {point->x, point->y, point->z}) {
      if (std::bit_cast<std::uint32_t>(stored[i]) !=
          std::bit_cast<std::uint32_t>(static_cast<float>(coordinate))) {
        return false;
      }
      ++i;
    }
  }
  return true;
}

}  // namespace

std::string differenceFrom(const std::string& path, std::span<const Triangle> triangles) {
  std::string difference;
  std::uint64_t seen = 0;
  const std::string problem = readBinaryStl(
      path, [&](std::uint64_t count, std::uint64_t first, std::span<const StlTriangle> stored) {
        if (count != triangles.size()) {
          difference = "has " + std::to_string(count) + " triangles, not " +
                       std::to_string(triangles.size());
          return false;
        }
        for (std::size_t i = 0; i < stored.size(); ++i) {
          if (!isSame(stored[i], triangles[first + i])) {
            difference = "differs from triangle " + std::to_string(first + i + 1) + " on";
            return false;
          }
        }
        seen += stored.size();
        return true;
      });
  if (!problem.empty() || !difference.empty()) {
    return problem + difference;
  }
  return seen == triangles.size() ? std::string()
                                  : "has 0 triangles, not " + std::to_string(triangles.size());
}

}  // namespace plenvorith
