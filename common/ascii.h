#pragma once

namespace plenvorith {

/// Whether a byte is one of the decimal digits, whatever the locale.
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace plenvorith
