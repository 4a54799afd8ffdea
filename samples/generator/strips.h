#pragma once

#include <cstddef>
#include <vector>

#include "samples/generator/facets.h"

namespace plenvorith::samples {

using Indices = std::vector<std::size_t>;

/// The same triangles as strips (1,2,3), (2,4,3), (3,4,5), ... and fans (1,2,3), (1,3,4), ...
struct StripsAndFans {
  std::vector<Indices> strips;
  std::vector<Indices> fans;
};

/// Takes the longest strip or fan that is left until all triangles are in one.
StripsAndFans stripsAndFansOf(const Facets& facets);

}  // namespace plenvorith::samples
