#pragma once

#include <string>

namespace plenvorith {

/// Converts a small part of its own, so that whatever the kernel sets up and the system links at
/// the first use is there in every copy of this process.
///
/// Only reading and meshing: what the kernel writes to STEP files carries numbers that it counts
/// through the whole process.
///
/// Takes   a `folder` where it may leave files.
/// Prints  nothing: standard output and error are turned away meanwhile.
void warmUp(const std::string& folder);

}  // namespace plenvorith
