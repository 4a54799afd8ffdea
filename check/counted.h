#pragma once

#include <cstdint>
#include <string>

namespace plenvorith {

/// A count with its noun, in the plural unless it is one: "1 part", "0 parts".
inline std::string counted(std::uint64_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

}  // namespace plenvorith
