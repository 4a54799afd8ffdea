#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// The corners of a triangle as an STL file holds them.
using FloatTriangle = std::array<float, 9>;

struct ReferencePreparation {
  std::vector<FloatTriangle>
      triangles;            ///< Of the part tessellation that nothing exact duplicates.
  std::size_t skipped = 0;  ///< Triangles with an index outside their list.
  bool hasExactGeometry = false;
  bool isCopied = true;  ///< Whether all is in millimetres and in place: numbers to the last bit.
};

/// What the STL file made of a prepared file has to hold besides the exact geometry, straight from
/// the entity definitions of ISO 10303-42, -43 and -44: all in memory, nothing written.
ReferencePreparation referencePrepare(std::string_view step);

}  // namespace plenvorith::test
