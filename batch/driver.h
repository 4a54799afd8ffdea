#pragma once

#include <string>
#include <vector>

#include "batch/options.h"

namespace plenvorith {

/// Does what the options ask for: finds the files, converts those that need it, keeps the state,
/// says what became of them.
///
/// Takes   the program's arguments, to note them.
/// Gives   its exit status: 0 all converted, 1 some not, 2 nothing was begun, 128 and the signal
///         that interrupted it.
int runDriver(const Options& given, const std::vector<std::string>& arguments);

}  // namespace plenvorith
