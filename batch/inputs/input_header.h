#pragma once

#include <string>

#include "batch/records/input_file.h"

namespace plenvorith {

/// Reads the header of a regular file.
InputHeader headerOf(const std::string& path);

}  // namespace plenvorith
