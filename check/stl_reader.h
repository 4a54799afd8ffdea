#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace plenvorith {

/// The twelve numbers of a record: normal, vertex 1, vertex 2, vertex 3.
using StlTriangle = std::array<float, 12>;

/// What takes the triangles of a file, some at a time and in their order: how many there are in the
/// whole file, the number of the first one (from 0 on), and the triangles. False ends the reading.
using StlVisitor =
    std::function<bool(std::uint64_t count, std::uint64_t first, std::span<const StlTriangle>)>;

/// Reads a binary STL file: 80 bytes of any text, the number of triangles, and 50 bytes for each;
/// all numbers are little-endian.
///
/// The number of triangles is believed only if the size of the file is the one that follows from
/// it. Vertices are finite; normals may be anything, as some writers give triangles without area
/// the result of a division by zero.
///
/// Takes   the `path` of a regular file, so that it can be read again.
/// Gives   what is wrong with the file and where, for a line that names it in front; empty if it was
///         read whole or the visitor ended the reading.
/// Cost    memory for one block, whatever the file says.
[[nodiscard]] std::string readBinaryStl(const std::string& path, const StlVisitor& visit);

}  // namespace plenvorith
