#pragma once

#include <array>
#include <cstdint>

#include "exchange/body_cursor.h"
#include "exchange/statement_reader.h"
#include "prepare/output_file.h"
#include "product/placement.h"

namespace plenvorith {

/// Goes to the points of the COORDINATES_LIST at whose start the cursor stands; false if there is
/// no such place.
[[nodiscard]] bool goToPoints(BodyCursor& cursor);

/// Reads a point or a direction, "(x,y,z)", at `p`. Gives the place behind it, or null where
/// something else stands.
[[nodiscard]] const char* readPoint(const char* p, const char* end, std::array<double, 3>& numbers);

/// Writes the COORDINATES_LIST of ISO 10303-42 that a reader stands at, with each point placed.
///
/// Takes   the name of the new list; the number of its points; the placement, or null to write
///         every number as it is.
/// Errors  false if something other than points of three numbers stands in the list, there are more
///         or fewer points, or a number becomes too large.
/// Memory  none, whatever the length of the list.
[[nodiscard]] bool writeCoordinates(StatementReader& reader, std::uint64_t name,
                                    std::uint64_t pointCount, const Placement* placement,
                                    OutputFile& output);

}  // namespace plenvorith
