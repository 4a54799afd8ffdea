#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "common/number.h"
#include "common/triangle.h"

namespace plenvorith {

/// A place in the parameter list of an entity (ISO 10303-21).
///
/// The operations below move it forward. They are forgiving about separators, which are never
/// errors when they are missing, and strict about numbers.
struct StepCursor {
  std::string_view text;     ///< Not owned.
  std::size_t pos = 0;       ///< Of the next character; at or behind the end there is none.
  std::size_t readable = 0;  ///< How many bytes behind the text may be read, though none counts.
};

/// One triangle of a face: three numbers of points, counted from 1, in the order read.
struct IndexTriple {
  std::int32_t i = 0;
  std::int32_t j = 0;
  std::int32_t k = 0;
};

/// The most items like "(1,2,3)" that the list at the start of a text may hold: the parentheses up
/// to its end, "))". A list that is not well-formed may hold more, so the result is good for
/// reserving memory only.
[[nodiscard]] std::size_t maxTripleCount(std::string_view list);

/// Whether a character is one that lists are set with: exactly space, horizontal tab, carriage return and line feed.
constexpr bool isSpaceOrLineEnd(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Skips blanks.
inline void skipWhitespace(StepCursor& cursor) {
  while (cursor.pos < cursor.text.size() && isSpaceOrLineEnd(cursor.text[cursor.pos])) {
    ++cursor.pos;
  }
}

/// Whether `c` comes next, behind blanks, which are skipped.
[[nodiscard]] [[gnu::always_inline]] inline bool nextIs(StepCursor& cursor, char c) {
  const auto isHere = [&cursor, c] {
    return cursor.pos < cursor.text.size() && cursor.text[cursor.pos] == c;
  };
  // Mostly there are no blanks.
  if (!isSpaceOrLineEnd(c) && isHere()) {
    return true;
  }
  skipWhitespace(cursor);
  return !isSpaceOrLineEnd(c) && isHere();
}

/// Skips blanks and then `c`, if it comes next.
[[gnu::always_inline]] inline void consumeIf(StepCursor& cursor, char c) {
  if (nextIs(cursor, c)) {
    ++cursor.pos;
  }
}

/// Reads a real number behind blanks.
///
/// The token is an optional sign, digits, optionally "." and digits, optionally "E" or "e", a sign
/// and digits; each run of digits may be empty. Its value is that of the longest part from its
/// start that is a number, so that the "E" of "1.E" is read and ignored; it does not depend on a
/// locale.
///
/// Errors  std::invalid_argument "invalid stod argument" if the token holds no number;
///         std::out_of_range "stod argument out of range" if the value overflows a double, or is so
///         small that it loses digits (what strtod reports as a range error). The cursor stands
///         behind the token in both cases.
double parseNumber(StepCursor& cursor);

/// Like `parseNumber`, but gives the error instead of throwing it; `value` is set if there is none.
[[nodiscard]] NumberError scanNumber(StepCursor& cursor, double& value);

/// Reads an instance name ("#42", also "#" alone) behind blanks: a part of the text, empty if none
/// comes next.
std::string_view parseReference(StepCursor& cursor);

/// Skips a quoted string behind blanks, if one comes next.
///
/// It ends at the next apostrophe; one that never ends goes to the end of the text. The two
/// apostrophes that stand for one inside a string are not recognised: the string ends at the first.
void skipQuotedString(StepCursor& cursor);

/// Skips a group that starts with the "(" at the cursor, up to and with its closing parenthesis.
///
/// Parentheses in quoted strings do not count. A group that never closes leaves the cursor at the
/// end of the text, or one behind it if a quoted string never ends either.
void skipParenthesisedGroup(StepCursor& cursor);

/// Reads a list of points, "((x,y,z),(x,y,z))", whose outer parenthesis may be missing.
///
/// Every inner list gives its first three numbers; one with more ends the whole list there.
///
/// Errors  those of `parseNumber`; an inner list with fewer than three numbers is one of them.
/// Cost    one pass over the text, no copy of it.
std::vector<Point3> parsePointList(StepCursor& cursor);

/// Reads a list of index triples, "((1,2,3),(1,3,4))", whose outer parenthesis is required: where
/// something else comes next, the result is empty and nothing but blanks is consumed.
///
/// The numbers are read like those of points and truncated toward zero; one that fits no signed
/// 32-bit integer becomes the least of them.
///
/// Errors, cost  those of `parsePointList`.
std::vector<IndexTriple> parseIndexTriples(StepCursor& cursor);

}  // namespace plenvorith
