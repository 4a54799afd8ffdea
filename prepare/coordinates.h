#pragma once

#include <cstdint>

#include "prepare/output_file.h"
#include "prepare/part21.h"
#include "prepare/placement.h"

namespace plenvorith {

/// Writes the COORDINATES_LIST of ISO 10303-42 that a reader stands at, with each point placed.
///
/// Takes   the name of the new list; the number of its points; the placement, or null to write
///         every number as it is.
/// Errors  false if something other than points of three numbers stands in the list, or a number
///         becomes too large.
/// Memory  none, whatever the length of the list.
[[nodiscard]] bool writeCoordinates(StatementReader& reader, std::uint64_t name,
                                    std::uint64_t pointCount, const Placement* placement,
                                    OutputFile& output);

}  // namespace plenvorith
