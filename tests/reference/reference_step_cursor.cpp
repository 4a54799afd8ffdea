#include "tests/reference/reference_step_cursor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "tests/reference/reference_number.h"

namespace plenvorith::test {
namespace {

bool isNow(const StepCursor& cursor, char c) {
  return cursor.pos < cursor.text.size() && cursor.text[cursor.pos] == c;
}

void skipDigits(StepCursor& cursor) {
  while (cursor.pos < cursor.text.size() && cursor.text[cursor.pos] >= '0' &&
         cursor.text[cursor.pos] <= '9') {
    ++cursor.pos;
  }
}

std::int32_t toInt32(double value) {
  const double truncated = std::trunc(value);
  if (truncated >= -2147483648.0 && truncated <= 2147483647.0) {
    return static_cast<std::int32_t>(truncated);
  }
  return std::numeric_limits<std::int32_t>::min();
}

Point3 parseThreeNumbers(StepCursor& cursor) {
  Point3 point;
  referenceConsumeIf(cursor, '(');
  point.x = referenceParseNumber(cursor);
  referenceConsumeIf(cursor, ',');
  point.y = referenceParseNumber(cursor);
  referenceConsumeIf(cursor, ',');
  point.z = referenceParseNumber(cursor);
  referenceConsumeIf(cursor, ')');
  return point;
}

}  // namespace

void referenceSkipWhitespace(StepCursor& cursor) {
  while (isNow(cursor, ' ') || isNow(cursor, '\t') || isNow(cursor, '\r') || isNow(cursor, '\n')) {
    ++cursor.pos;
  }
}

bool referenceNextIs(StepCursor& cursor, char c) {
  referenceSkipWhitespace(cursor);
  return isNow(cursor, c);
}

void referenceConsumeIf(StepCursor& cursor, char c) {
  referenceSkipWhitespace(cursor);
  if (isNow(cursor, c)) {
    ++cursor.pos;
  }
}

double referenceParseNumber(StepCursor& cursor) {
  referenceSkipWhitespace(cursor);
  const std::size_t start = std::min(cursor.pos, cursor.text.size());
  const ReferenceNumber number = referenceNumber(cursor.text.substr(start));
  cursor.pos += number.length;
  if (number.error == NumberError::NoNumber) {
    throw std::invalid_argument("invalid stod argument");
  }
  if (number.error == NumberError::OutOfRange) {
    throw std::out_of_range("stod argument out of range");
  }
  return number.value;
}

std::string referenceParseReference(StepCursor& cursor) {
  referenceSkipWhitespace(cursor);
  if (!isNow(cursor, '#')) {
    return "";
  }
  const std::size_t start = cursor.pos;
  ++cursor.pos;
  skipDigits(cursor);
  return std::string(cursor.text.substr(start, cursor.pos - start));
}

void referenceSkipQuotedString(StepCursor& cursor) {
  referenceSkipWhitespace(cursor);
  if (!isNow(cursor, '\'')) {
    return;
  }
  ++cursor.pos;
  while (cursor.pos < cursor.text.size() && cursor.text[cursor.pos] != '\'') {
    ++cursor.pos;
  }
  if (cursor.pos < cursor.text.size()) {
    ++cursor.pos;
  }
}

void referenceSkipParenthesisedGroup(StepCursor& cursor) {
  int depth = 0;
  do {
    if (isNow(cursor, '(')) {
      ++depth;
    } else if (isNow(cursor, ')')) {
      if (depth == 1) {
        ++cursor.pos;
        return;
      }
      --depth;
    } else if (isNow(cursor, '\'')) {
      ++cursor.pos;
      while (cursor.pos < cursor.text.size() && cursor.text[cursor.pos] != '\'') {
        ++cursor.pos;
      }
    }
    ++cursor.pos;
  } while (cursor.pos < cursor.text.size());
}

std::vector<Point3> referenceParsePointList(StepCursor& cursor) {
  std::vector<Point3> points;
  referenceConsumeIf(cursor, '(');
  while (referenceNextIs(cursor, '(')) {
    points.push_back(parseThreeNumbers(cursor));
    referenceConsumeIf(cursor, ',');
  }
  referenceConsumeIf(cursor, ')');
  return points;
}

std::vector<IndexTriple> referenceParseIndexTriples(StepCursor& cursor) {
  std::vector<IndexTriple> triples;
  if (!referenceNextIs(cursor, '(')) {
    return triples;
  }
  referenceConsumeIf(cursor, '(');
  while (referenceNextIs(cursor, '(')) {
    const Point3 numbers = parseThreeNumbers(cursor);
    triples.push_back({toInt32(numbers.x), toInt32(numbers.y), toInt32(numbers.z)});
    referenceConsumeIf(cursor, ',');
  }
  referenceConsumeIf(cursor, ')');
  return triples;
}

}  // namespace plenvorith::test
