#include "prepare/coordinates.h"

#include <cmath>

#include "common/number.h"

namespace plenvorith {

const char* readPoint(const char* p, const char* end, std::array<double, 3>& numbers) {
  if (p == end || *p != '(') {
    return nullptr;
  }
  for (std::size_t i = 0; i < 3; ++i) {
    const NumberResult result = readNumber(p + 1, end, numbers[i]);
    if (result.error != NumberError::None || result.end == end ||
        *result.end != (i < 2 ? ',' : ')')) {
      return nullptr;
    }
    p = result.end;
  }
  return p + 1;
}

bool goToPoints(BodyCursor& cursor) {
  (void)cursor.takeKeyword();
  bool isThere = cursor.take('(');
  for (int i = 0; i < 2 && isThere; ++i) {  // name, npoints
    cursor.skipParameter();
    isThere = cursor.take(',');
  }
  return isThere;
}

namespace {

bool writePlaced(const std::array<double, 3>& point, const Placement& placement,
                 OutputFile& output) {
  constexpr std::size_t kLongest = 100;
  char* const start = output.room(kLongest);
  char* to = start;
  *to++ = '(';
  for (const auto& row : placement.m) {
    const double value = row[0] * point[0] + row[1] * point[1] + row[2] * point[2] + row[3];
    if (!std::isfinite(value)) {
      return false;
    }
    to = writeReal(to, value);
    *to++ = ',';
  }
  to[-1] = ')';
  output.used(static_cast<std::size_t>(to - start));
  return true;
}

/// Writes the points that are whole in what the cursor can look at, one at least, and adds their
/// number. False if there is none or one cannot be placed.
bool writePoints(BodyCursor& cursor, const Placement* placement, OutputFile& output,
                 std::uint64_t& count) {
  (void)cursor.peek();
  const char* const begin = cursor.position();
  const char* const last = cursor.end();
  const char* p = begin;
  const char* written = begin;  // end of the points that were written, or can be copied
  do {
    std::array<double, 3> numbers = {};
    const char* const next = readPoint(p, last, numbers);
    if (next == nullptr) {
      return false;
    }
    if (placement != nullptr) {
      if (p != begin) {
        output.put(',');
      }
      if (!writePlaced(numbers, *placement, output)) {
        return false;
      }
    }
    ++count;
    written = next;
    p = next + 1;
  } while (last - p > BodyCursor::kLookahead && written[0] == ',');
  if (placement == nullptr) {
    output.put({begin, static_cast<std::size_t>(written - begin)});
  }
  cursor.moveTo(written);
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
  std::uint64_t count = 0;
  bool isRead = goToPoints(cursor) && cursor.take('(');
  if (isRead && !cursor.take(')')) {
    do {
      isRead = writePoints(cursor, placement, output, count);
      if (isRead && cursor.peek() == ',') {
        output.put(',');
      }
    } while (isRead && cursor.take(','));
    isRead = isRead && cursor.take(')');
  }
  output.put("));\n");
  return isRead && count == pointCount;
}

}  // namespace plenvorith
