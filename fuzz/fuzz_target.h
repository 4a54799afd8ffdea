#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

/// What every fuzz target defines: tries one input, and aborts on a find.
// NOLINTNEXTLINE(readability-identifier-naming): the engine calls it by this name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace plenvorith::fuzz {

/// Longer inputs are passed over: the regular expressions of the references recurse per character.
constexpr std::size_t kMaxInput = std::size_t{16} << 10U;

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return {data, data + size};
}

/// Aborts unless product and reference agree on `what`.
inline void require(bool agree, const char* what) {
  if (!agree) {
    std::cerr << "product and reference differ: " << what << std::endl;
    std::abort();
  }
}

}  // namespace plenvorith::fuzz
