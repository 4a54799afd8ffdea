#pragma once

#include <string>

#include "batch/report/inspection.h"
#include "batch/state/state.h"

namespace plenvorith {

/// Writes what is known of all files to `path`: as a table with a line of titles if it ends in
/// ".csv", else as a JSON array of objects. Names and lines are text of UTF-8; what is none of it,
/// and control characters, stand as in a terminal: \n, \xff.
///
/// Takes   what was found out about the outputs, or nothing.
/// Gives   whether it could be written whole.
[[nodiscard]] bool exportState(StateHandle& state, const std::string& path,
                               InspectionsHandle* inspections = nullptr);

}  // namespace plenvorith
