#include "tessellation/step_cursor.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "common/ascii.h"
#include "common/number.h"
#include "common/reserve.h"
#include "tessellation/triple_list.h"

namespace plenvorith {
namespace {

/// Reads a number behind blanks; the cursor stands behind its token whether or not it is one.
[[gnu::always_inline]] inline NumberError readNumberAt(StepCursor& cursor, double& value) {
  skipWhitespace(cursor);
  const char* const text = cursor.text.data();
  const char* const first = text + std::min(cursor.pos, cursor.text.size());
  const NumberResult result = readNumber(first, text + cursor.text.size(), value, cursor.readable);
  cursor.pos += static_cast<std::size_t>(result.end - first);
  return result.error;
}

}  // namespace

[[gnu::noinline]] NumberError scanTriple(StepCursor& cursor, Point3& numbers) {
  consumeIf(cursor, '(');
  NumberError error = readNumberAt(cursor, numbers.x);
  if (error == NumberError::None) {
    consumeIf(cursor, ',');
    error = readNumberAt(cursor, numbers.y);
  }
  if (error == NumberError::None) {
    consumeIf(cursor, ',');
    error = readNumberAt(cursor, numbers.z);
  }
  if (error == NumberError::None) {
    consumeIf(cursor, ')');
  }
  return error;
}

std::int32_t truncateToInt32(double value) {
  // Written so that a NaN takes the second way.
  if (value > -2147483649.0 && value < 2147483648.0) {
    return static_cast<std::int32_t>(value);
  }
  return std::numeric_limits<std::int32_t>::min();
}

std::size_t maxTripleCount(std::string_view list) {
  // Counts in blocks whose counts fit a byte, which the compiler turns into wide instructions; with
  // `std::count` this took a third of the time of decoding.
  constexpr std::size_t kBlock = 128;
  std::size_t parentheses = 0;
  std::string_view rest = list;
  for (; rest.size() > kBlock; rest.remove_prefix(kBlock)) {
    std::uint8_t opening = 0;
    std::uint8_t ends = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      opening = static_cast<std::uint8_t>(opening + (rest[i] == '(' ? 1 : 0));
      const int difference = (rest[i] ^ ')') | (rest[i + 1] ^ ')');
      ends |= static_cast<std::uint8_t>(difference == 0 ? 1 : 0);
    }
    if (ends != 0) {
      break;
    }
    parentheses += opening;
  }
  const std::string_view last = rest.substr(0, rest.find("))"));
  parentheses += static_cast<std::size_t>(std::count(last.begin(), last.end(), '('));
  constexpr std::size_t kShortest = std::string_view("(1,2,3)").size();
  return std::min(parentheses, list.size() / kShortest);
}

NumberError scanNumber(StepCursor& cursor, double& value) {
  return readNumberAt(cursor, value);
}

double parseNumber(StepCursor& cursor) {
  double value = 0.0;
  if (const NumberError error = readNumberAt(cursor, value); error != NumberError::None) {
    throwNumberError(error);
  }
  return value;
}

std::string_view parseReference(StepCursor& cursor) {
  if (!nextIs(cursor, '#')) {
    return {};
  }
  const std::size_t start = cursor.pos++;
  while (cursor.pos < cursor.text.size() && isDigit(cursor.text[cursor.pos])) {
    ++cursor.pos;
  }
  return cursor.text.substr(start, cursor.pos - start);
}

void skipQuotedString(StepCursor& cursor) {
  if (!nextIs(cursor, '\'')) {
    return;
  }
  const std::size_t closing = cursor.text.find('\'', cursor.pos + 1);
  cursor.pos = closing == std::string_view::npos ? cursor.text.size() : closing + 1;
}

void skipParenthesisedGroup(StepCursor& cursor) {
  const std::string_view text = cursor.text;
  std::size_t depth = 0;
  while (cursor.pos < text.size()) {
    const char c = text[cursor.pos];
    if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    } else if (c == '\'') {
      cursor.pos = std::min(text.find('\'', cursor.pos + 1), text.size());
    }
    ++cursor.pos;
    if (c == ')' && depth == 0) {
      return;
    }
  }
}

NumberError scanPointList(StepCursor& cursor, std::vector<Point3>& points) {
  consumeIf(cursor, '(');
  const auto readShort = [](const char* first, std::string_view text, std::size_t readable,
                            Point3& point) {
    return shorttriple::readPoint(first, text, readable, point);
  };
  return scanTriples<Point3>(
      cursor, readShort, [](const Point3& numbers) { return numbers; },
      [&points](const Point3& point) { points.push_back(point); });
}

std::vector<Point3> parsePointList(StepCursor& cursor) {
  std::vector<Point3> points;
  reserveLarge(points, maxTripleCount(restOf(cursor)));
  if (const NumberError error = scanPointList(cursor, points); error != NumberError::None) {
    throwNumberError(error);
  }
  return points;
}

std::vector<IndexTriple> parseIndexTriples(StepCursor& cursor) {
  std::vector<IndexTriple> triples;
  reserveLarge(triples, maxTripleCount(restOf(cursor)));
  const NumberError error = scanIndexTriples(
      cursor, [&triples](const IndexTriple& triple) { triples.push_back(triple); });
  if (error != NumberError::None) {
    throwNumberError(error);
  }
  return triples;
}

}  // namespace plenvorith
