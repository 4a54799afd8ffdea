#pragma once

#include <string>
#include <vector>

#include "brep/part_facts.h"

namespace plenvorith {

/// Lists the parts of a mesh that was written in split mode, beside it.
///
/// Takes   the path `output` that the converter was asked for, and the exact parts by their numbers.
/// Gives   true, and OUTPUT.parts.json: a JSON array with one part a line, each with number, path,
///         name, kind, triangles and placement (three rows of a 3 by 4 matrix). A part without a file
///         has no triangles; decoded tessellation is the last part and has no number. Bytes that are
///         no UTF-8 become \xff. Where no mesh was written there is no list.
/// Errors  false, and one line on standard error, if the list cannot be written; what is there of it
///         then is no list.
[[nodiscard]] bool writePartList(const std::string& output, const std::vector<PartName>& parts);

}  // namespace plenvorith
