#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace plenvorith::shortnumber {

// The numbers that tessellations consist of, read eight characters at a time and without a branch
// for each: scanning them one by one costs more than converting them. `readNumber` in
// common/number.h, which is what to call, tries this first. Everything here is inlined into the
// loops that read most of a file.
//
// A number is read in four steps, each of which moves `p` behind what it has read:
//   sign and whole part   -123        mantissa 123, sign 1
//   fraction              .456        mantissa 123456, exponent -3
//   exponent              E2          exponent -1
//   value                             123456 / 10^1, negative
// A step that meets more than it can hold says false, and the number is read in another way.

/// The most characters that are looked at: seven of sign and digits, ".", fifteen digits, "E", a
/// sign and eight more. That many must be there.
inline constexpr std::size_t kLongest = 7 + 1 + 15 + 1 + 1 + 8;

/// A number in the making: `mantissa` times ten to the power of `exponent`.
struct Decimal {
  std::uint64_t mantissa = 0;
  int digitCount = 0;      ///< of the mantissa, leading zeros included
  int exponent = 0;        ///< of ten
  std::uint64_t sign = 0;  ///< 1 for a minus
};

/// The eight characters at `p`, the first in the lowest byte. A digit is its value; every other
/// character has one of the upper four bits set or is above 9.
inline std::uint64_t loadDigits(const char* p) {
  std::uint64_t chunk = 0;
  std::memcpy(&chunk, p, 8);
  if constexpr (std::endian::native == std::endian::big) {
    chunk = __builtin_bswap64(chunk);
  }
  return chunk ^ 0x3030303030303030U;
}

/// Marks each byte that is not the value of a digit, by its top bit.
inline std::uint64_t markOthers(std::uint64_t digits) {
  return (((digits & 0x7F7F7F7F7F7F7F7FU) + 0x7676767676767676U) | digits) & 0x8080808080808080U;
}

/// The number of bytes below the first one that is marked; 8 if none is.
inline int countUnmarked(std::uint64_t marks) {
  return std::countr_zero(marks) / 8;
}

inline constexpr std::array<std::uint64_t, 9> kPowersOfTen = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};

/// The number that eight digits make.
inline std::uint64_t combineEight(std::uint64_t digits) {
  // Puts pairs together, then fours, then all.
  digits = digits * 10 + (digits >> 8);
  return ((digits & 0x000000FF000000FFU) * 0x000F424000000064U +
          ((digits >> 16) & 0x000000FF000000FFU) * 0x0000271000000001U) >>
         32;
}

/// The number that the first `count` digits make, seven at most.
inline std::uint64_t combineFirst(std::uint64_t digits, int count) {
  return combineEight(digits << 8 << (56 - 8 * count));  // with zeros in front
}

/// Reads an optional minus and one to seven digits, six behind a minus.
[[gnu::always_inline]] inline bool readWholePart(const char*& p, Decimal& number) {
  const std::uint64_t digits = loadDigits(p);
  // A minus is made a leading zero. It is as likely as not, so that a branch for it would cost half
  // as much as the rest; nor does the place of what follows wait for it.
  const std::uint64_t first = digits & 0xFF;
  number.sign = ((first ^ ('-' ^ '0')) - 1) >> 63;
  const int count = countUnmarked(markOthers(digits) & ~std::uint64_t{0x80});
  const bool startsWithOther = first * (1 - number.sign) > 9;
  const bool isEmpty = count <= static_cast<int>(number.sign);
  if (startsWithOther || isEmpty || count == 8) {
    return false;
  }
  number.mantissa = combineFirst(digits & ~(number.sign * 0xFF), count);
  number.digitCount = count;
  p += count;
  return true;
}

/// Reads "." and up to fifteen digits, if a "." comes next.
[[gnu::always_inline]] inline bool readFraction(const char*& p, Decimal& number) {
  if (*p != '.') {
    return true;
  }
  std::uint64_t digits = loadDigits(++p);
  int count = countUnmarked(markOthers(digits));
  if (count == 8) {
    number.mantissa = number.mantissa * 100'000'000 + combineEight(digits);
    number.exponent = -8;
    digits = loadDigits(p += 8);
    count = countUnmarked(markOthers(digits));
    if (count == 8) {
      return false;
    }
  }
  number.mantissa =
      number.mantissa * kPowersOfTen[static_cast<std::size_t>(count)] + combineFirst(digits, count);
  number.exponent -= count;
  number.digitCount -= number.exponent;
  p += count;
  return true;
}

/// Reads "E" or "e", an optional sign and up to seven digits, if such a letter comes next.
[[gnu::always_inline]] inline bool readExponent(const char*& p, Decimal& number) {
  if (*p != 'E' && *p != 'e') {
    return true;
  }
  const bool isNegative = *++p == '-';
  p += isNegative || *p == '+' ? 1 : 0;
  const std::uint64_t digits = loadDigits(p);
  const int count = countUnmarked(markOthers(digits));
  if (count == 8) {
    return false;
  }
  const auto written = static_cast<int>(combineFirst(digits, count));
  number.exponent += isNegative ? -written : written;
  p += count;
  return true;
}

/// Makes the double, if one operation does it: a whole number and a power of ten that are both
/// exact doubles give, in one multiplication or division, the correctly rounded result.
[[gnu::always_inline]] inline bool makeValue(const Decimal& number, double& value) {
  static constexpr std::array<double, 23> kExactPowersOfTen = {
      1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
  constexpr int kMostDigits = 19;  // fit 64 bits
  const int exponent = number.exponent;
  if (number.digitCount > kMostDigits || number.mantissa > kLargestExact || exponent < -22 ||
      exponent > 22) {
    return false;
  }
  const auto whole = static_cast<double>(static_cast<std::int64_t>(number.mantissa));
  const double magnitude = exponent < 0
                               ? whole / kExactPowersOfTen[static_cast<std::size_t>(-exponent)]
                               : whole * kExactPowersOfTen[static_cast<std::size_t>(exponent)];
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | number.sign << 63);
  return true;
}

/// Reads the number at `first` if it is a short one. Of any other, and of those with fewer than
/// `kLongest` characters up to the end of the `readable` ones behind `last`, it reads nothing.
///
/// Gives  where the number's token ends, or null.
[[gnu::always_inline]] inline const char* read(const char* first, const char* last,
                                               std::size_t readable, double& value) {
  if (static_cast<std::size_t>(last - first) + readable < kLongest) {
    return nullptr;
  }
  const char* p = first;
  Decimal number;
  const bool isRead = readWholePart(p, number) && readFraction(p, number) &&
                      readExponent(p, number) && makeValue(number, value);
  // What was read behind the end does not count.
  return isRead && p <= last ? p : nullptr;
}

}  // namespace plenvorith::shortnumber
