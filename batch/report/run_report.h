#pragma once

#include <string>

#include "batch/options.h"
#include "batch/state/names.h"
#include "batch/state/state.h"

namespace plenvorith {

/// Writes the report of all that the state knows, DIR/index.html, after the tools that the options
/// ask for have looked at the meshes.
///
/// Prints  its path on standard output; what went wrong on standard error.
/// Errors  false. A file of that name that is no report is left alone.
bool reportState(const Options& options, StateHandle& state, const Places& places);

/// Writes what is known of all files, and what was found out about their outputs, to the path of a
/// table or of objects; false if it cannot be written whole.
[[nodiscard]] bool exportAll(const std::string& path, StateHandle& state, const Places& places);

}  // namespace plenvorith
