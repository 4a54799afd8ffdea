#pragma once

#include <string>

namespace plenvorith {

/// Rewrites a STEP file (ISO 10303-21) into the form that the converter takes whole: tessellation
/// of parts as plain triangles, placed and in millimetres; no other tessellation; one instance a
/// line.
///
/// Takes   the path of a file that can be read twice, which is not changed, and that of the file to
///         write, which is another one. The latter is written beside itself under another name that
///         goes on an error or a signal that ends the program.
/// Gives   the exit status: 0, the file is written and holds geometry; 1, an error, no file is
///         written; 3, the file is written and holds no geometry.
/// Prints  a report on standard output; on an error, what is wrong on standard error.
/// Memory  some 20 bytes for an instance of exact geometry, more for others; of lists only the index
///         mapping of one face at a time, four bytes an entry.
[[nodiscard]] int prepareFile(const std::string& inputPath, const std::string& outputPath);

}  // namespace plenvorith
