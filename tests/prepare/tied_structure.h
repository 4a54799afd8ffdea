#pragma once

#include "prepare/orphans.h"
#include "product/product_structure.h"

namespace plenvorith::test {

/// The structure of a file whose orphans are tied.
inline ProductStructure tiedStructure(const InstanceTable& table) {
  ProductStructure structure = readProductStructure(table);
  (void)tieOrphans(table, structure);
  return structure;
}

}  // namespace plenvorith::test
