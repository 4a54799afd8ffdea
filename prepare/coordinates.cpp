#include "prepare/coordinates.h"

#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "common/number.h"
#include "prepare/body_cursor.h"

namespace plenvorith {
namespace {

/// A point, and its text from the first number to the last.
struct Point {
  std::array<double, 3> numbers = {};
  const char* begin = nullptr;
  const char* end = nullptr;
};

/// Reads "x,y,z)" behind the parenthesis; the text stays in place until the cursor is asked again.
bool readPoint(BodyCursor& cursor, Point& point) {
  (void)cursor.peek();
  const char* p = cursor.position();
  const char* const last = cursor.end();
  point.begin = p;
  for (std::size_t i = 0; i < 3; ++i) {
    const NumberResult result = readNumber(p, last, point.numbers[i]);
    const char after = i < 2 ? ',' : ')';
    if (result.error != NumberError::None || result.end == last || *result.end != after) {
      return false;
    }
    p = result.end + 1;
  }
  point.end = p - 1;
  cursor.moveTo(p);
  return true;
}

bool writePlaced(const Point& point, const Placement& placement, OutputFile& output) {
  constexpr std::size_t kLongest = 100;
  char* const start = output.room(kLongest);
  char* to = start;
  for (const auto& row : placement.m) {
    const double value =
        row[0] * point.numbers[0] + row[1] * point.numbers[1] + row[2] * point.numbers[2] + row[3];
    if (!std::isfinite(value)) {
      return false;
    }
    to = writeReal(to, value);
    *to++ = ',';
  }
  output.used(static_cast<std::size_t>(to - start) - 1);
  return true;
}

}  // namespace

bool writeCoordinates(StatementReader& reader, std::uint64_t name, std::uint64_t pointCount,
                      const Placement* placement, OutputFile& output) {
  output.put('#');
  output.put(name);
  output.put("=COORDINATES_LIST('',");
  output.put(pointCount);
  output.put(",(");
  BodyCursor cursor(reader);
  (void)cursor.takeKeyword();
  bool isRead = cursor.take('(');
  for (int i = 0; i < 2 && isRead; ++i) {  // name, npoints
    cursor.skipParameter();
    isRead = cursor.take(',');
  }
  isRead = isRead && cursor.take('(');
  bool isFirst = true;
  while (isRead && !(isFirst && cursor.take(')'))) {
    Point point;
    if (!cursor.take('(') || !readPoint(cursor, point)) {
      return false;
    }
    output.put(isFirst ? "(" : ",(");
    isFirst = false;
    if (placement == nullptr) {
      output.put({point.begin, static_cast<std::size_t>(point.end - point.begin)});
    } else if (!writePlaced(point, *placement, output)) {
      return false;
    }
    output.put(')');
    if (!cursor.take(',')) {
      isRead = cursor.take(')');
      break;
    }
  }
  output.put("));\n");
  return isRead;
}

}  // namespace plenvorith
