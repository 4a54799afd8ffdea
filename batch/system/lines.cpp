#include "batch/system/lines.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

#include <unistd.h>

namespace plenvorith {

bool readMore(int descriptor, std::string& text) {
  std::array<char, 65536> block{};
  const ssize_t count = read(descriptor, block.data(), block.size());
  text.append(block.data(), static_cast<std::size_t>(std::max(count, ssize_t{0})));
  return count > 0 || (count < 0 && errno == EINTR);
}

std::vector<std::string> takeLines(std::string& text) {
  std::vector<std::string> lines;
  std::string_view whole = std::string_view(text).substr(0, text.rfind('\n') + 1);
  const std::size_t length = whole.size();
  while (!whole.empty()) {
    lines.emplace_back(cutOff(whole, '\n'));
  }
  text.erase(0, length);
  return lines;
}

std::string_view cutOff(std::string_view& text, char end) {
  const std::size_t place = std::min(text.find(end), text.size());
  const std::string_view front = text.substr(0, place);
  text.remove_prefix(std::min(place + 1, text.size()));
  return front;
}

}  // namespace plenvorith
