#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "common/short_number.h"

namespace plenvorith {

/// Up to eight decimal digits in front of a place in a text.
struct DigitGroup {
  const char* end = nullptr;
  int count = 0;  ///< 0 to 8
};

/// The whole numbers that the groups make; zero for a group of no digit. The eight characters in
/// front of each `end` are read, whatever they are.
///
/// This is the portable way; `convertDigitGroups` is the one to call.
template <std::size_t Count>
[[gnu::always_inline]] inline std::array<std::int32_t, Count> convertDigitGroupsPortably(
    const std::array<DigitGroup, Count>& groups) {
  std::array<std::int32_t, Count> numbers{};
  for (std::size_t i = 0; i < Count; ++i) {
    // What is in front of the digits becomes zeros. Two shifts, since one by all 64 bits is not
    // defined.
    const int half = 32 - 4 * groups[i].count;
    const std::uint64_t digits = shortnumber::loadDigits(groups[i].end - 8) >> half >> half;
    numbers[i] = static_cast<std::int32_t>(shortnumber::combineEight(digits << half << half));
  }
  return numbers;
}

#if defined(__SSE2__) && !defined(PLENVORITH_PORTABLE)
namespace digitgroups {

/// Eight characters of `first` and eight of `second`.
inline __m128i loadPair(const char* first, const char* second) {
  const __m128i half = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(first));
  return _mm_unpacklo_epi64(half, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(second)));
}

/// The digits of two groups as four numbers of four digits each.
[[gnu::always_inline]] inline __m128i combineFours(const DigitGroup& first,
                                                   const DigitGroup& second) {
  // Eight bytes of it, from the place `count` on, have the last `count` ones set.
  alignas(16) static constexpr std::array<char, 16> kLastOnes = {0,  0,  0,  0,  0,  0,  0,  0,
                                                                 -1, -1, -1, -1, -1, -1, -1, -1};
  const __m128i characters = loadPair(first.end - 8, second.end - 8);
  const __m128i counted = loadPair(kLastOnes.data() + first.count, kLastOnes.data() + second.count);
  const __m128i digits = _mm_and_si128(_mm_xor_si128(characters, _mm_set1_epi8('0')), counted);
  // A pair "ab" is the word a + 256 b; 10 a + b is in the upper byte of its product with 2561.
  const __m128i pairs = _mm_srli_epi16(_mm_mullo_epi16(digits, _mm_set1_epi16(2561)), 8);
  return _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
}

/// The numbers of eight digits each that two results of `combineFours` make.
inline __m128i combineEights(__m128i first, __m128i second) {
  return _mm_madd_epi16(_mm_packs_epi32(first, second), _mm_set1_epi32(1 << 16 | 10'000));
}

}  // namespace digitgroups

/// Like `convertDigitGroupsPortably`, but four groups at once: `Count` is a multiple of that.
template <std::size_t Count>
[[gnu::always_inline]] inline std::array<std::int32_t, Count> convertDigitGroups(
    const std::array<DigitGroup, Count>& groups) {
  static_assert(Count % 4 == 0);
  std::array<std::int32_t, Count> numbers{};
  for (std::size_t i = 0; i < Count; i += 4) {
    const __m128i four =
        digitgroups::combineEights(digitgroups::combineFours(groups[i], groups[i + 1]),
                                   digitgroups::combineFours(groups[i + 2], groups[i + 3]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(numbers.data() + i), four);
  }
  return numbers;
}
#else
template <std::size_t Count>
[[gnu::always_inline]] inline std::array<std::int32_t, Count> convertDigitGroups(
    const std::array<DigitGroup, Count>& groups) {
  return convertDigitGroupsPortably(groups);
}
#endif

}  // namespace plenvorith
