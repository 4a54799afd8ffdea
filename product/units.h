#pragma once

#include <optional>

#include "exchange/parameters.h"

namespace plenvorith {

/// The millimetres in one unit of length of the context of representation, from ISO 10303-41:
/// GLOBAL_UNIT_ASSIGNED_CONTEXT, LENGTH_UNIT, SI_UNIT, CONVERSION_BASED_UNIT. Nothing if the
/// context has no unit of length that can be read.
[[nodiscard]] std::optional<double> readUnit(InstanceReader& reader, InstanceIndex context);

}  // namespace plenvorith
