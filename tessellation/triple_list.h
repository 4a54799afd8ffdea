#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "common/number.h"
#include "common/triangle.h"
#include "tessellation/short_triple.h"
#include "tessellation/step_cursor.h"

namespace plenvorith {

/// What the cursor has not read yet.
inline std::string_view restOf(const StepCursor& cursor) {
  return cursor.text.substr(std::min(cursor.pos, cursor.text.size()));
}

/// Reads three numbers, "(a,b,c)", whose "(" comes next; where one is none, the cursor stands behind
/// its token.
[[nodiscard]] NumberError scanTriple(StepCursor& cursor, Point3& numbers);

/// A number that was read for an index, truncated toward zero; the least integer where it fits none.
[[nodiscard]] std::int32_t truncateToInt32(double value);

/// Reads "(a,b,c)" items until something else comes, then the outer ")" if it is there, and calls
/// `use` with each item as soon as it is read. `readShort` reads an item of the common form,
/// `makeItem` makes one of any three numbers.
///
/// Gives  the error of the first number that is none; the cursor stands behind its token.
template <typename Item, typename ReadShort, typename MakeItem, typename Use>
[[nodiscard]] NumberError scanTriples(StepCursor& cursor, ReadShort readShort, MakeItem makeItem,
                                      Use use) {
  // A cursor that nothing else knows of stays in registers.
  StepCursor fast = cursor;
  const std::string_view text = fast.text;
  while (nextIs(fast, '(')) {
    Item item;
    if (const char* const behind = readShort(text.data() + fast.pos, text, fast.readable, item)) {
      fast.pos = static_cast<std::size_t>(behind - text.data());
    } else {
      cursor.pos = fast.pos;
      Point3 numbers;
      if (const NumberError error = scanTriple(cursor, numbers); error != NumberError::None) {
        return error;
      }
      fast.pos = cursor.pos;
      item = makeItem(numbers);
    }
    use(item);
    consumeIf(fast, ',');
  }
  consumeIf(fast, ')');
  cursor.pos = fast.pos;
  return NumberError::None;
}

/// Reads a list of points like `parsePointList`, but adds them to `points`.
[[nodiscard]] NumberError scanPointList(StepCursor& cursor, std::vector<Point3>& points);

/// Reads a list of index triples like `parseIndexTriples`, but calls `use` with each of them.
template <typename Use>
[[nodiscard]] NumberError scanIndexTriples(StepCursor& cursor, Use use) {
  if (!nextIs(cursor, '(')) {
    return NumberError::None;
  }
  ++cursor.pos;
  // An empty list ends at its ")" like any other.
  const auto readShort = [](const char* first, std::string_view text, std::size_t readable,
                            IndexTriple& triple) {
    return shorttriple::readIndices(first, text, readable, triple);
  };
  const auto makeTriple = [](const Point3& numbers) {
    return IndexTriple{truncateToInt32(numbers.x), truncateToInt32(numbers.y),
                       truncateToInt32(numbers.z)};
  };
  return scanTriples<IndexTriple>(cursor, readShort, makeTriple, use);
}

}  // namespace plenvorith
