#include "tessellation/step_cursor.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "common/ascii.h"
#include "common/number.h"
#include "common/reserve.h"
#include "tessellation/short_triple.h"

namespace plenvorith {
namespace {

std::int32_t truncateToInt32(double value) {
  // Written so that a NaN takes the second way.
  if (value > -2147483649.0 && value < 2147483648.0) {
    return static_cast<std::int32_t>(value);
  }
  return std::numeric_limits<std::int32_t>::min();
}

/// Reads a number behind blanks; the cursor stands behind its token whether or not it is one.
[[gnu::always_inline]] inline NumberError readNumberAt(StepCursor& cursor, double& value) {
  skipWhitespace(cursor);
  const char* const text = cursor.text.data();
  const char* const first = text + std::min(cursor.pos, cursor.text.size());
  const NumberResult result = readNumber(first, text + cursor.text.size(), value, cursor.readable);
  cursor.pos += static_cast<std::size_t>(result.end - first);
  return result.error;
}

/// Reads "(a,b,c)", whose "(" comes next.
[[gnu::noinline]] NumberError readTriple(StepCursor& cursor, Point3& numbers) {
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

/// Reads "(a,b,c)" items into `items` until something else comes, then the outer ")" if it is
/// there. `readShort` reads an item of the common form, `makeItem` makes one of any three numbers.
template <typename Item, typename ReadShort, typename MakeItem>
void parseTriples(StepCursor& cursor, std::vector<Item>& items, ReadShort readShort,
                  MakeItem makeItem) {
  const std::string_view text = cursor.text;
  reserveLarge(items, maxTripleCount(text.substr(std::min(cursor.pos, text.size()))));
  // A cursor that nothing else knows of stays in registers.
  StepCursor fast = cursor;
  while (nextIs(fast, '(')) {
    Item item;
    if (const char* const behind = readShort(text.data() + fast.pos, text, cursor.readable, item)) {
      fast.pos = static_cast<std::size_t>(behind - text.data());
    } else {
      cursor.pos = fast.pos;
      Point3 numbers;
      if (const NumberError error = readTriple(cursor, numbers); error != NumberError::None) {
        throwNumberError(error);
      }
      fast.pos = cursor.pos;
      item = makeItem(numbers);
    }
    items.push_back(item);
    consumeIf(fast, ',');
  }
  consumeIf(fast, ')');
  cursor.pos = fast.pos;
}

}  // namespace

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

std::vector<Point3> parsePointList(StepCursor& cursor) {
  std::vector<Point3> points;
  consumeIf(cursor, '(');
  const auto readShort = [](const char* first, std::string_view text, std::size_t readable,
                            Point3& point) {
    return shorttriple::readPoint(first, text, readable, point);
  };
  parseTriples(cursor, points, readShort, [](const Point3& numbers) { return numbers; });
  return points;
}

std::vector<IndexTriple> parseIndexTriples(StepCursor& cursor) {
  std::vector<IndexTriple> triples;
  if (!nextIs(cursor, '(')) {
    return triples;
  }
  ++cursor.pos;
  // An empty list ends at its ")" like any other.
  const auto readShort = [](const char* first, std::string_view text, std::size_t readable,
                            IndexTriple& triple) {
    return shorttriple::readIndices(first, text, readable, triple);
  };
  parseTriples(cursor, triples, readShort, [](const Point3& numbers) {
    return IndexTriple{truncateToInt32(numbers.x), truncateToInt32(numbers.y),
                       truncateToInt32(numbers.z)};
  });
  return triples;
}

}  // namespace plenvorith
