#include "exchange/real_number.h"

#include <algorithm>
#include <cstdint>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// Whether a number that is not zero and out of range is on the upper side: by the power of ten of
/// its first digit, which is far from 0 on either.
bool isHuge(const char* p, const char* end) {
  p = std::find_if_not(p, end, [](char c) { return c == '+' || c == '-' || c == '0'; });
  std::int64_t power = 0;
  for (; p != end && isDigit(*p); ++p) {
    ++power;
  }
  if (power == 0 && p != end && *p == '.') {
    const char* const first = std::find_if_not(p + 1, end, [](char c) { return c == '0'; });
    power = p + 1 - first;
  }
  p = std::find_if(p, end, [](char c) { return c == 'E' || c == 'e'; });
  const bool isNegative = end - p > 1 && p[1] == '-';
  constexpr std::int64_t kMost = std::int64_t{1} << 40U;  // beyond any number that fits into memory
  std::int64_t exponent = 0;
  for (p = std::find_if(p, end, isDigit); p != end && isDigit(*p); ++p) {
    exponent = std::min(exponent * 10 + (*p - '0'), kMost);
  }
  return power + (isNegative ? -exponent : exponent) > 0;
}

}  // namespace

RealNumber readUnusualReal(const char* first, const char* last) {
  RealNumber number;
  const NumberResult result = readNumber(first, last, number.value);
  number.end = result.end;
  if (result.error == NumberError::OutOfRange) {
    number.kind = isHuge(first, result.end) ? RealNumber::Kind::Huge : RealNumber::Kind::Tiny;
  } else if (result.error == NumberError::None) {
    number.kind = RealNumber::Kind::Tiny;
  }
  number.value = 0.0;
  return number;
}

}  // namespace plenvorith
