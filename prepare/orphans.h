#pragma once

#include <vector>

#include "product/product_structure.h"

namespace plenvorith {

/// Exact representations that no product reaches, so that the kernel would not deliver them.
struct Orphans {
  std::vector<InstanceIndex> representations;
  InstanceIndex productShape = kNoInstance;  ///< to tie them to; none if the file has no product
                                             ///< shape or several
};

/// Finds orphans, none if any product of the file has exact geometry, and marks them as reached: they
/// are to be tied to a product.
[[nodiscard]] Orphans tieOrphans(const InstanceTable& table, ProductStructure& structure);

}  // namespace plenvorith
