#pragma once

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

}  // namespace plenvorith
