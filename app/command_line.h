#pragma once

#include <vector>

#include "brep/part_names.h"

namespace plenvorith {

/// Does all that the program does: reads the arguments, converts one file, says how it went.
///
/// Takes   what `main` takes: after the program's name the input path, the output path, the
///         deflection in millimetres (optional), and anything at all to write one file for each
///         shape (optional). More arguments are ignored. Where the names of exact shapes go that
///         are converted to STL, or null.
/// Gives   the program's exit status: 0 if the file is converted, 1 if not.
/// Prints  the transcript of the conversion, then "Done" or "Failed"; nothing where arguments are
///         missing.
/// Errors  exceptions of the pipelines pass.
int runConverter(int argc, char** argv, std::vector<PartName>* names = nullptr);

}  // namespace plenvorith
