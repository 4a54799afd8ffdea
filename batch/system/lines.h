#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace plenvorith {

/// Appends what can be read from a descriptor now, or waits for it; false at the end.
bool readMore(int descriptor, std::string& text);

/// Cuts the whole lines off the front of a text and gives them, without their ends. What is left is
/// the beginning of a line.
std::vector<std::string> takeLines(std::string& text);

/// Cuts off and gives what stands before the first `end`, which goes as well; all if there is none.
std::string_view cutOff(std::string_view& text, char end);

}  // namespace plenvorith
