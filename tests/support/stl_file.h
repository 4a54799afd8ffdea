#pragma once

#include <array>
#include <string>
#include <vector>

namespace plenvorith::test {

/// Normal x, y, z and three vertices, as in a record of an STL file.
using StlRecord = std::array<float, 12>;

/// A binary STL file as the program writes it.
std::string stlFile(const std::vector<StlRecord>& records);

/// The records of a binary STL file.
///
/// Errors  throws std::runtime_error if its length is not what the count in it says.
std::vector<StlRecord> recordsOf(const std::string& file);

/// The volume that closed triangles with outward corners enclose.
double volumeOf(const std::vector<StlRecord>& records);

}  // namespace plenvorith::test
