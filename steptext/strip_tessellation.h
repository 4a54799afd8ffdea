#pragma once

#include <string>

namespace plenvorith {

/// Makes a copy of a STEP file without its tessellated entities, for readers that must meet none.
///
/// Works on physical lines. A line that begins with an instance name, "=" and one of four type
/// names (tessellated solid, tessellated shape representation, complex triangulated face,
/// coordinates list) goes, and with it every line up to the first that ends with ";". All other
/// lines are copied byte for byte; references to what is gone are left as they are.
///
/// Takes   the `path` of the file, which is never changed.
/// Gives   `path` itself if the file cannot be opened or names no tessellated type at all; else the
///         path of the copy: the last component of `path` with ".clean.stp" appended, in the
///         system's temporary directory. The caller deletes it. An older copy is overwritten.
/// Prints  one line with the number of lines removed, when a copy is made.
/// Errors  throws std::filesystem::filesystem_error where there is no temporary directory. A copy
///         that cannot be written is not noticed here.
/// Cost    one pass; memory for the whole file.
[[nodiscard]] std::string stripTessellation(const std::string& path);

}  // namespace plenvorith
