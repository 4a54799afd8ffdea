#pragma once

#include <string>

#include "batch/state/state.h"

namespace plenvorith {

/// Writes what is known of all files to `path`: as a table with a line of titles if it ends in
/// ".csv", else as a JSON array of objects. Names and lines are text of UTF-8; what is none of it,
/// and control characters, stand as in a terminal: \n, \xff.
///
/// Gives   whether it could be written whole.
[[nodiscard]] bool exportState(StateHandle& state, const std::string& path);

}  // namespace plenvorith
