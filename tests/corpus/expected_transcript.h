#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace plenvorith::test {

/// One file of the index: from the name of a column to what stands there.
using Row = std::map<std::string, std::string>;

/// "-" counts as 0.
std::size_t numberOrZero(const std::string& field);

/// Whether the kernel reads exact geometry from the file.
bool hasExactShapes(const Row& row);

/// What the program has to print for one file, and its exit status. The lines of the kernel and the
/// one that names the temporary copy are not among these.
struct Expected {
  int exitStatus = 0;
  std::string out;
  std::string err;
};

/// Of a conversion of `input` to "out.stl" at the deflection 0.1.
Expected expectedForStl(const Row& row, const std::string& input, std::size_t brepTriangles);

/// Of a conversion of `input` to "out.step".
Expected expectedForStep(const Row& row, const std::string& input, std::size_t brepTriangles);

}  // namespace plenvorith::test
