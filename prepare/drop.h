#pragma once

#include <cstdint>
#include <vector>

#include "exchange/instance_table.h"
#include "product/product_structure.h"

namespace plenvorith {

/// What becomes of an instance.
enum class Fate : std::uint8_t {
  Kept,     ///< as it is
  Changed,  ///< kept, without references to what is dropped: those in lists go, attributes become "$"
  Retyped,  ///< a tessellated representation that holds other items, too: kept as a
            ///< SHAPE_REPRESENTATION of these
  Dropped,
};

/// Decides the fate of each instance: drops what is of a tessellated type or draws annotation from
/// it, and from there on what names something dropped.
///
/// A reference in a list is taken out of the list; an instance whose list becomes empty by that, or
/// which names something dropped as an attribute of its own, is dropped as well.
/// Exact geometry and product structure are never dropped, whatever they name.
[[nodiscard]] std::vector<Fate> decideFates(const InstanceTable& table,
                                            const ProductStructure& structure);

}  // namespace plenvorith
