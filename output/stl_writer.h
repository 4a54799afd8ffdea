#pragma once

#include <string>
#include <vector>

#include "common/triangle.h"

namespace plenvorith {

/// Writes triangles as a binary STL file.
///
/// The layout, all little-endian: an 80-byte header that starts with "Plenvorith binary STL" and is
/// zero from there on; the number of triangles as an unsigned 32-bit integer (its low 32 bits, if
/// there are more); for each triangle, in the given order, its twelve numbers as 32-bit floats,
/// each rounded to the nearest, and a 16-bit attribute that is zero. Nothing is scaled, merged,
/// dropped or computed anew.
///
/// Takes   the `path` as it stands; an existing file is overwritten.
/// Gives   false if the file could not be opened, true otherwise: a disk that fills up while
///         writing is not noticed.
/// Prints  one line on standard error if the file could not be opened.
[[nodiscard]] bool writeBinaryStl(const std::string& path, const std::vector<Triangle>& triangles);

}  // namespace plenvorith
