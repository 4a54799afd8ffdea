#pragma once

#include <vector>

#include "product/product_structure.h"

namespace plenvorith {

/// Marks the representations that hold exact geometry which the kernel makes faces of, and what else
/// they hold.
void markExact(const InstanceTable& table, ProductStructure& structure);

/// Marks, from the shapes of products that are marked, what else the kernel comes to: over one
/// SHAPE_REPRESENTATION_RELATIONSHIP, and then over mapped items.
void markReached(const InstanceTable& table, ProductStructure& structure);

/// Marks what those that are reached map, and what that maps.
void markReachedByMapping(ProductStructure& structure);

/// The solids, shells and faces, by instance, that the exact ones of these representations carry,
/// however deep.
[[nodiscard]] std::vector<bool> findCarried(const InstanceTable& table,
                                            const ProductStructure& structure,
                                            const std::vector<RepresentationIndex>& carrying);

}  // namespace plenvorith
