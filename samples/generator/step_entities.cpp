#include "samples/generator/step_entities.h"

#include <array>
#include <charconv>
#include <sstream>

namespace plenvorith::samples {

std::size_t add(Entities& entities, const std::string& content) {
  ++entities.last;
  entities.text += ref(entities.last) + "=" + content + ";\n";
  return entities.last;
}

std::string ref(std::size_t instance) {
  return "#" + std::to_string(instance);
}

std::string real(double value) {
  std::array<char, 64> buffer{};
  constexpr int kDecimals = 4;
  const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                  std::chars_format::fixed, kDecimals)
                        .ptr;
  std::string text(static_cast<const char*>(buffer.data()), end);
  text.erase(text.find_last_not_of('0') + 1);
  return text == "-0." ? "0." : text;
}

std::string wrap(const std::string& text) {
  constexpr std::size_t kWidth = 72;
  std::string wrapped;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    while (line.size() > kWidth && line.rfind(',', kWidth - 1) != std::string::npos) {
      const std::size_t length = line.rfind(',', kWidth - 1) + 1;
      wrapped.append(line, 0, length).append("\n");
      line.erase(0, length);
    }
    wrapped += line + "\n";
  }
  return wrapped;
}

}  // namespace plenvorith::samples
