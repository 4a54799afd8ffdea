#pragma once

#include <cstdint>

namespace plenvorith {

/// Whether a byte means nothing outside strings: blanks and control characters.
constexpr bool isBlank(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}

/// Finds where something other than plain text of ISO 10303-21 may start: a blank, a string, a
/// binary, a comment, the end of a statement, a reference with a leading zero.
///
/// Takes  the bytes from `p` to `end`; none behind them is looked at.
/// Gives  the first such place, or the last byte if none before it is one: what that starts may
///        depend on what comes behind it. `end` if there are no bytes.
[[nodiscard]] const char* findSpecial(const char* p, const char* end);

/// Finds the first byte at which a string, a binary, a comment or the end of a statement may start,
/// or `end` if none is there. Adds the number of parentheses that open before it.
[[nodiscard]] const char* findMark(const char* p, const char* end, std::uint64_t& opened);

}  // namespace plenvorith
