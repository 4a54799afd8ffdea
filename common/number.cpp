#include "common/number.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// The token of a number at `p`: as long as the grammar allows, and perhaps empty.
std::string_view numberToken(const char* p, const char* end) {
  const char* const begin = p;
  const auto skipOneOf = [&p, end](char a, char b) {
    const bool isHere = p != end && (*p == a || *p == b);
    p += isHere ? 1 : 0;
    return isHere;
  };
  const auto skipDigits = [&p, end] { p = std::find_if_not(p, end, isDigit); };
  skipOneOf('-', '+');
  skipDigits();
  if (skipOneOf('.', '.')) {
    skipDigits();
  }
  if (skipOneOf('E', 'e')) {
    skipOneOf('-', '+');
    skipDigits();
  }
  return {begin, static_cast<std::size_t>(p - begin)};
}

/// Converts a token that overflows or is so small that the C library may report a range error. It
/// does so only where digits get lost, which it alone can tell; such numbers are rare.
NumberError convertExtreme(std::string_view token, double& value) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  if (cLocale == nullptr) {
    throw std::bad_alloc();  // the only reason that there can be
  }
  const std::string terminated(token);
  const int errnoBefore = errno;
  errno = 0;
  const double converted = strtod_l(terminated.c_str(), nullptr, cLocale);
  const bool isOutOfRange = errno == ERANGE;
  errno = errnoBefore;
  if (isOutOfRange) {
    return NumberError::OutOfRange;
  }
  value = converted;
  return NumberError::None;
}

/// Converts any token, with the checks of the standard string conversion.
NumberError convert(std::string_view token, double& value) {
  double converted = 0.0;
  const bool hasPlus = !token.empty() && token.front() == '+';
  const char* const first = token.data() + (hasPlus ? 1 : 0);
  const auto [end, error] = std::from_chars(first, token.data() + token.size(), converted);
  if (error == std::errc::invalid_argument) {
    return NumberError::NoNumber;
  }
  if (error == std::errc() && std::abs(converted) > std::numeric_limits<double>::min()) {
    value = converted;
    return NumberError::None;
  }
  return convertExtreme(token, value);
}

}  // namespace

NumberResult readAnyNumber(const char* first, const char* last, double& value) {
  const std::string_view token = numberToken(first, last);
  return {first + token.size(), convert(token, value)};
}

void throwNumberError(NumberError error) {
  if (error == NumberError::OutOfRange) {
    throw std::out_of_range("stod argument out of range");
  }
  throw std::invalid_argument("invalid stod argument");
}

}  // namespace plenvorith
