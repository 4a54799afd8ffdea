#pragma once

#include <set>
#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/state/names.h"

namespace plenvorith {

/// Finds those of the files that earlier runs into the output folder made: they lie among the inputs
/// where an INPUT holds the output folder, is it, or lies in it, whatever links lead there.
///
/// Gives   their paths; none where there is no state that can be read.
std::set<std::string> findOwnOutputs(const Places& places, const std::vector<InputFile>& files);

}  // namespace plenvorith
