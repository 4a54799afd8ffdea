#pragma once

#include <cstddef>
#include <string>

namespace plenvorith::samples {

/// The entities of one file, in the order of their instance names.
struct Entities {
  std::string text;
  std::size_t last = 0;  ///< The number of the last instance.
};

/// Appends an entity, all on one line, and gives its number.
std::size_t add(Entities& entities, const std::string& content);

/// The name of an instance: "#12".
std::string ref(std::size_t instance);

/// Four decimals at most, and always a point, which the format asks for: "0.5", "-12.".
std::string real(double value);

/// "(first,second,...)" of what `textOf` makes of each item.
template <typename Items, typename TextOf>
std::string list(const Items& items, TextOf textOf) {
  std::string text = "(";
  for (const auto& item : items) {
    text.append(text.size() == 1 ? "" : ",").append(textOf(item));
  }
  return text.append(")");
}

/// Breaks each line behind the last comma that leaves no more than 72 bytes on the line.
std::string wrap(const std::string& text);

}  // namespace plenvorith::samples
