#pragma once

#include <string>
#include <vector>

#include "tests/reference/reference_model.h"
#include "tests/reference/reference_placement.h"

namespace plenvorith::test {

using Placements = std::vector<Placement>;

/// Millimetres in a unit of a representation.
double unitOf(const Model& model, const std::string& representation);

/// Wherever the representations of a group stand in the whole: through the usages of their
/// products, through mapped items, or once where nothing places them.
Placements placementsOfGroup(const Model& model, const std::string& group);

}  // namespace plenvorith::test
