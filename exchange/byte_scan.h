#pragma once

#include <cstdint>
#include <string_view>

namespace plenvorith {

/// Whether a byte means nothing outside strings: blanks and control characters.
constexpr bool isIgnored(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}

/// Finds where something other than plain text of ISO 10303-21 may start: a blank, a string, a
/// comment, the end of a statement, a reference with a leading zero.
///
/// Takes  the bytes from `p` to `end`; none behind them is looked at.
/// Gives  the first such place, or the last byte if none before it is one: what that starts may
///        depend on what comes behind it. `end` if there are no bytes.
[[nodiscard]] const char* findSpecial(const char* p, const char* end);

/// The capital letter of a small one; anything else as it is.
constexpr char capital(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether a text starts with a word in capital letters, in letters of either size.
[[nodiscard]] bool startsWith(std::string_view text, std::string_view word);

/// How many parentheses open and close in a text.
struct Parentheses {
  std::uint64_t opened = 0;
  std::uint64_t closed = 0;
};

/// Finds the first byte at which a string, a comment or the end of a statement may start,
/// or `end` if none is there. Adds the parentheses before it.
[[nodiscard]] const char* findMark(const char* p, const char* end, Parentheses& counts);

}  // namespace plenvorith
