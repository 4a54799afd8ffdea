#include "prepare/index_list.h"

#include "common/ascii.h"
#include "common/number.h"

namespace plenvorith {

bool readIndex(TokenReader& tokens, Index& index) {
  (void)tokens.peek();
  const char* p = tokens.position();
  const char* const end = tokens.end();
  Index value = 0;
  while (p != end && isDigit(*p) && p - tokens.position() < kMaxIndexDigits) {
    value = value * 10 + (*p - '0');
    ++p;
  }
  if (p != tokens.position() && p != end && (*p == ',' || *p == ')')) {
    tokens.moveTo(p);
    index = value;
    return true;
  }
  double number = 0.0;
  const NumberResult result = readNumber(tokens.position(), end, number);
  if (result.error != NumberError::None) {
    return false;
  }
  tokens.moveTo(result.end);
  constexpr double kLargest = 1e15;
  index = number > -kLargest && number < kLargest ? static_cast<Index>(number) : -1;
  return true;
}

}  // namespace plenvorith
