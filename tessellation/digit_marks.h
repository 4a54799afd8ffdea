#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "common/short_number.h"

namespace plenvorith {

/// Marks which of the first `Size` characters at `p` are no decimal digits: the lowest bit stands
/// for the first character. `Size` is 16, 32, 48 or 64; none behind it is looked at.
///
/// This is the portable way; `markNonDigits` is the one to call.
template <std::size_t Size>
[[gnu::always_inline]] inline std::uint64_t markNonDigitsPortably(const char* p) {
  std::uint64_t marks = 0;
  for (std::size_t i = 0; i < Size; i += 8) {
    // The multiplication gathers the lowest bits of all eight bytes in the highest byte.
    const std::uint64_t others = shortnumber::markOthers(shortnumber::loadDigits(p + i)) >> 7;
    marks |= (others * 0x0102040810204080U >> 56) << i;
  }
  return marks;
}

#if defined(__SSE2__) && !defined(PLENVORITH_PORTABLE)
/// Like `markNonDigitsPortably`, sixteen characters in each step.
template <std::size_t Size>
[[gnu::always_inline]] inline std::uint64_t markNonDigits(const char* p) {
  std::uint64_t marks = 0;
  for (std::size_t i = 0; i < Size; i += 16) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    // Makes the digits the ten least signed bytes: there is no comparison of unsigned ones.
    const __m128i moved = _mm_xor_si128(chunk, _mm_set1_epi8(static_cast<char>(0x80 | '0')));
    const __m128i others = _mm_cmpgt_epi8(moved, _mm_set1_epi8(-128 + 9));
    marks |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(others))) << i;
  }
  return marks;
}
#else
template <std::size_t Size>
[[gnu::always_inline]] inline std::uint64_t markNonDigits(const char* p) {
  return markNonDigitsPortably<Size>(p);
}
#endif

}  // namespace plenvorith
