#pragma once

#include <cstddef>

#include "common/short_number.h"

namespace plenvorith {

/// Why a token gives no double.
enum class NumberError {
  None,
  NoNumber,    ///< it holds no number: "", "-", ".", "E5"
  OutOfRange,  ///< the value overflows a double or is so small that it loses digits
};

/// Where the token of a number ends, and whether it gave a value.
struct NumberResult {
  const char* end = nullptr;
  NumberError error = NumberError::None;
};

/// Reads a number of any shape, in a way that takes longer than `readNumber` but the same result.
NumberResult readAnyNumber(const char* first, const char* last, double& value);

/// Reads the real number (ISO 10303-21) whose token begins at `first`, with no blanks in front.
///
/// The token is an optional sign, digits, optionally "." and digits, optionally "E" or "e", a sign
/// and digits; each run of digits may be empty, and so may be all of it. Its value is that of the
/// longest part from its start that is a number, so that the "E" of "1.E" is read and ignored; it
/// is rounded correctly and does not depend on a locale.
///
/// Takes   the characters from `first` to `last`. If `readable` bytes behind `last` may be read,
///         though none counts, numbers at the end take no longer than others.
/// Gives   the end of the token, on an error too; `value` is set only where there is none.
/// Errors  what strtod reports as a range error is out of range, subnormals that are exact are not.
[[gnu::always_inline]] inline NumberResult readNumber(const char* first, const char* last,
                                                      double& value, std::size_t readable = 0) {
  if (const char* const end = shortnumber::read(first, last, readable, value)) {
    return {end, NumberError::None};
  }
  return readAnyNumber(first, last, value);
}

/// Throws what the standard string conversion throws: std::invalid_argument "invalid stod argument"
/// where there is no number, std::out_of_range "stod argument out of range" where it does not fit.
[[noreturn]] void throwNumberError(NumberError error);

}  // namespace plenvorith
