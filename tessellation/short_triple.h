#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/short_number.h"
#include "common/triangle.h"
#include "tessellation/digit_groups.h"
#include "tessellation/digit_marks.h"

namespace plenvorith::shorttriple {

// The two kinds of triples that tessellations consist of, "(12,13,27)" and "(1.5,-2.25,0.)", with
// nothing between their characters. Where their numbers end is found for all three at once, in a
// word that has one bit for each character, so that what follows waits for no comparison of single
// characters. Whatever else comes next is left to the cursor, which can read everything.
//
// Where `readable` bytes behind the text may be read, items that end there are read in this way,
// too: what is read beyond the end makes an item end beyond it, and that is none.

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

/// Reads "(i,j,k)" at `first`, a place in `text`, if all three are whole numbers of at most eight
/// digits without a sign.
///
/// Gives  where it ends, or null.
template <typename Triple>
[[gnu::always_inline]] inline const char* readIndices(const char* first, std::string_view text,
                                                      std::size_t readable, Triple& triple) {
  constexpr std::size_t kLookedAt = 1 + 32 + 8;
  const char* const last = text.data() + text.size();
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

/// Reads "(x,y,z)" behind its "(", if all three are numbers like "-12.5" of ordinary length.
[[gnu::always_inline]] inline const char* readLongPoint(const char* p, std::uint64_t marks,
                                                        Point3& point) {
  const bool isRead = readCoordinate(p, marks, ',', point.x) &&
                      readCoordinate(p, marks, ',', point.y) &&
                      readCoordinate(p, marks, ')', point.z);
  return isRead ? p : nullptr;
}

/// A coordinate that is found but not converted: up to seven digits, ".", up to eight digits.
struct ShortCoordinate {
  DigitGroup whole;
  DigitGroup fraction;
  bool isNegative = false;
};

/// The place of the lowest mark, which is taken off; false if there is none.
[[gnu::always_inline]] inline bool takeMark(std::uint64_t& marks, int& place) {
  if (marks == 0) {
    return false;
  }
  place = std::countr_zero(marks);
  marks &= marks - 1;
  return true;
}

/// Finds the parts of a coordinate that begins `start` characters behind `p`, and `behind`, the
/// character behind it; `start` moves behind that. `marks` has one bit for each character from `p`
/// on, those in front of `start` taken off.
[[gnu::always_inline]] inline bool findCoordinate(const char* p, std::uint64_t& marks, int& start,
                                                  char behind, ShortCoordinate& coordinate) {
  coordinate.isNegative = p[start] == '-';
  marks = coordinate.isNegative ? marks & (marks - 1) : marks;
  int point = 0;
  int end = 0;
  if (!takeMark(marks, point) || !takeMark(marks, end) || p[point] != '.' || p[end] != behind) {
    return false;
  }
  coordinate.whole = {p + point, point - start - (coordinate.isNegative ? 1 : 0)};
  coordinate.fraction = {p + end, end - point - 1};
  start = end + 1;
  return coordinate.whole.count >= 1 && coordinate.whole.count <= 7 &&
         coordinate.fraction.count <= 8;
}

/// The double that a coordinate of these two parts is. They have fifteen digits at most, so that
/// all but the division is exact, and that rounds correctly.
[[gnu::always_inline]] inline double valueOf(const ShortCoordinate& coordinate, std::int32_t whole,
                                             std::int32_t fraction) {
  static constexpr std::array<double, 9> kPowersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4,
                                                         1e5, 1e6, 1e7, 1e8};
  static constexpr std::array<double, 2> kSigns = {0.0, -0.0};
  const double power = kPowersOfTen[static_cast<std::size_t>(coordinate.fraction.count)];
  const double magnitude = (whole * power + fraction) / power;
  const double sign = kSigns[coordinate.isNegative ? 1 : 0];
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) |
                               std::bit_cast<std::uint64_t>(sign));
}

/// Reads "(x,y,z)" behind its "(", if all three are as short as `ShortCoordinate` says: their six
/// parts are converted side by side.
[[gnu::always_inline]] inline const char* readShortPoint(const char* p, std::uint64_t marks,
                                                         Point3& point) {
  ShortCoordinate x;
  ShortCoordinate y;
  ShortCoordinate z;
  int end = 0;
  if (!findCoordinate(p, marks, end, ',', x) || !findCoordinate(p, marks, end, ',', y) ||
      !findCoordinate(p, marks, end, ')', z)) {
    return nullptr;
  }
  // They are converted four by four, hence the last two a second time.
  const std::array<DigitGroup, 8> parts = {x.whole, x.fraction, y.whole, y.fraction,
                                           z.whole, z.fraction, z.whole, z.fraction};
  const std::array<std::int32_t, 8> numbers = convertDigitGroups(parts);
  point = {valueOf(x, numbers[0], numbers[1]), valueOf(y, numbers[2], numbers[3]),
           valueOf(z, numbers[4], numbers[5])};
  return p + end;
}

/// Reads "(x,y,z)" at `first`, a place in `text`, if all three are numbers like "-12.5" of ordinary
/// length.
///
/// Gives  where it ends, or null.
[[gnu::always_inline]] inline const char* readPoint(const char* first, std::string_view text,
                                                    std::size_t readable, Point3& point) {
  constexpr std::size_t kLookedAt = 1 + 64 + 8;
  constexpr std::size_t kLookedBackAt = 8;
  const char* const last = text.data() + text.size();
  if (static_cast<std::size_t>(last - first) + readable < kLookedAt) {
    return nullptr;
  }
  const char* const p = first + 1;
  const std::uint64_t marks = markNonDigits<64>(p);
  const char* end = nullptr;
  if (static_cast<std::size_t>(first - text.data()) >= kLookedBackAt) {
    end = readShortPoint(p, marks, point);
  }
  if (end == nullptr) {
    end = readLongPoint(p, marks, point);
  }
  return end != nullptr && end <= last ? end : nullptr;
}

}  // namespace plenvorith::shorttriple
