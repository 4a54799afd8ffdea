#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/stl_file.h"

namespace plenvorith::test {

/// What a mesh tells of itself, from the definitions.
struct ReferenceMesh {
  std::uint64_t openEdges = 0;
  std::uint64_t degenerate = 0;
  std::uint64_t pieces = 0;
  double volume = 0.0;
  double area = 0.0;
};

ReferenceMesh referenceMesh(const std::vector<StlRecord>& records);

}  // namespace plenvorith::test
