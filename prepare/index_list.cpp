#include "prepare/index_list.h"

#include "common/ascii.h"
#include "common/number.h"

namespace plenvorith {

bool readIndex(BodyCursor& cursor, Index& index) {
  (void)cursor.peek();
  const char* p = cursor.position();
  const char* const end = cursor.end();
  Index value = 0;
  while (p != end && isDigit(*p) && p - cursor.position() < kMaxIndexDigits) {
    value = value * 10 + (*p - '0');
    ++p;
  }
  if (p != cursor.position() && p != end && (*p == ',' || *p == ')')) {
    cursor.moveTo(p);
    index = value;
    return true;
  }
  double number = 0.0;
  const NumberResult result = readNumber(cursor.position(), end, number);
  if (result.error != NumberError::None) {
    return false;
  }
  cursor.moveTo(result.end);
  constexpr double kLargest = 1e15;
  index = number > -kLargest && number < kLargest ? static_cast<Index>(number) : -1;
  return true;
}

}  // namespace plenvorith
