#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace plenvorith {

static_assert(std::numeric_limits<float>::is_iec559, "STL files hold IEEE floats");

// Numbers as binary STL files hold them, the least byte first, whatever order the processor has.
// Compilers make one move of each.

/// Puts four bytes at `out`; gives the place behind them.
inline char* putUint32(char* out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) {
    *out++ = static_cast<char>(value >> shift & 0xFFU);
  }
  return out;
}

/// Puts four bytes at `out`; gives the place behind them.
inline char* putFloat(char* out, float value) {
  return putUint32(out, std::bit_cast<std::uint32_t>(value));
}

/// The number in the four bytes at `p`.
inline std::uint32_t getUint32(const char* p) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(p[i]);
  }
  return value;
}

/// The number in the four bytes at `p`.
inline float getFloat(const char* p) {
  return std::bit_cast<float>(getUint32(p));
}

}  // namespace plenvorith
