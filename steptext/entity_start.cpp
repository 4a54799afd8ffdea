#include "steptext/entity_start.h"

#include "common/ascii.h"

namespace plenvorith {

std::size_t entityNameLength(std::string_view line) {
  if (line.empty() || line.front() != '#') {
    return 0;
  }
  std::size_t length = 1;
  while (length < line.size() && isDigit(line[length])) {
    ++length;
  }
  const bool startsEntity = length > 1 && length < line.size() && line[length] == '=';
  return startsEntity ? length : 0;
}

}  // namespace plenvorith
