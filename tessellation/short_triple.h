#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "common/digit_marks.h"
#include "common/short_number.h"
#include "common/triangle.h"

namespace plenvorith::shorttriple {

// The two kinds of triples that tessellations consist of, "(12,13,27)" and "(1.5,-2.25,0.)", with
// nothing between their characters. Where their numbers end is found for all three at once, in a
// word that has one bit for each character, so that what follows waits for no comparison of single
// characters. Whatever else comes next is left to the cursor, which can read everything.
//
// Where `readable` bytes behind `last` may be read, items that end there are read in this way, too:
// what is read beyond the end makes an item end beyond it, and that is none.

/// The number that up to eight digits at `p` make; zero for none. Eight characters must be there.
[[gnu::always_inline]] inline std::uint64_t combine(const char* p, int count) {
  // The digits that do not count are pushed out, zeros come in front. Two halves, since a shift by
  // all 64 bits at once is not defined.
  const int half = 32 - 4 * count;
  return shortnumber::combineEight(shortnumber::loadDigits(p) << half << half);
}

/// Takes what is in front of the next marked character, and the mark, off `marks` and `p`.
///
/// Gives  how many characters there are; 64 if no mark is left.
[[gnu::always_inline]] inline int takeDigits(const char*& p, std::uint64_t& marks) {
  const int count = std::countr_zero(marks);
  marks = marks >> (count & 63) >> 1;
  p += count + 1;
  return count;
}

/// Reads one to eight digits and `behind`, the character behind them.
[[gnu::always_inline]] inline bool readIndex(const char*& p, std::uint64_t& marks, char behind,
                                             std::int32_t& index) {
  const char* const first = p;
  const int count = takeDigits(p, marks);
  if (count < 1 || count > 8 || p[-1] != behind) {
    return false;
  }
  index = static_cast<std::int32_t>(combine(first, count));
  return true;
}

/// Reads "(i,j,k)" at `first`, if all three are whole numbers of at most eight digits without a
/// sign.
///
/// Gives  where it ends, or null.
template <typename Triple>
[[gnu::always_inline]] inline const char* readIndices(const char* first, const char* last,
                                                      std::size_t readable, Triple& triple) {
  constexpr std::size_t kLookedAt = 1 + 32 + 8;
  if (static_cast<std::size_t>(last - first) + readable < kLookedAt) {
    return nullptr;
  }
  const char* p = first + 1;
  std::uint64_t marks = markNonDigits<32>(p);
  const bool isRead = readIndex(p, marks, ',', triple.i) && readIndex(p, marks, ',', triple.j) &&
                      readIndex(p, marks, ')', triple.k);
  return isRead && p <= last ? p : nullptr;
}

/// Reads an optional minus, one to eight digits, ".", up to sixteen digits and `behind`, if one
/// operation makes a double of that.
[[gnu::always_inline]] inline bool readCoordinate(const char*& p, std::uint64_t& marks, char behind,
                                                  double& coordinate) {
  shortnumber::Decimal number;
  number.sign = *p == '-' ? 1 : 0;
  marks >>= number.sign;
  p += number.sign;
  const char* const whole = p;
  const int wholeCount = takeDigits(p, marks);
  if (wholeCount < 1 || wholeCount > 8 || p[-1] != '.') {
    return false;
  }
  const char* const fraction = p;
  const int fractionCount = takeDigits(p, marks);
  if (fractionCount > 16 || p[-1] != behind) {
    return false;
  }
  number.mantissa = combine(whole, wholeCount);
  int rest = fractionCount;
  const char* place = fraction;
  if (rest > 8) {
    number.mantissa = number.mantissa * 100'000'000 + combine(place, 8);
    place += 8;
    rest -= 8;
  }
  number.mantissa = number.mantissa * shortnumber::kPowersOfTen[static_cast<std::size_t>(rest)] +
                    combine(place, rest);
  number.digitCount = wholeCount + fractionCount;
  number.exponent = -fractionCount;
  return shortnumber::makeValue(number, coordinate);
}

/// Reads "(x,y,z)" at `first`, if all three are numbers like "-12.5" of ordinary length.
///
/// Gives  where it ends, or null.
[[gnu::always_inline]] inline const char* readPoint(const char* first, const char* last,
                                                    std::size_t readable, Point3& point) {
  constexpr std::size_t kLookedAt = 1 + 64 + 8;
  if (static_cast<std::size_t>(last - first) + readable < kLookedAt) {
    return nullptr;
  }
  const char* p = first + 1;
  std::uint64_t marks = markNonDigits<64>(p);
  const bool isRead = readCoordinate(p, marks, ',', point.x) &&
                      readCoordinate(p, marks, ',', point.y) &&
                      readCoordinate(p, marks, ')', point.z);
  return isRead && p <= last ? p : nullptr;
}

}  // namespace plenvorith::shorttriple
