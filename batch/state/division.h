#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace plenvorith {

/// Divides files into `parts` parts of about the same work.
///
/// Takes  the sizes of the files in bytes, in the order of their paths.
/// Gives  the part of each file, from 0 on. The same sizes give the same parts, on every machine.
std::vector<std::size_t> divideEvenly(const std::vector<std::uint64_t>& sizes, std::size_t parts);

/// Divides files into chunks that `workers` workers take one after the other, so that all of them
/// end at about the same time: the chunks get smaller, and the largest files come first.
///
/// Takes  the sizes of the files in bytes.
/// Gives  for each chunk the numbers of its files, from 0 on; no chunk is empty.
std::vector<std::vector<std::size_t>> divideIntoChunks(const std::vector<std::uint64_t>& sizes,
                                                       std::size_t workers);

}  // namespace plenvorith
