#pragma once

#include <string>
#include <string_view>

namespace plenvorith {

/// Bytes as text for one line of a terminal or a log: control characters as \n, \t and \x1b, a
/// backslash as two, all other bytes as they are.
std::string printable(std::string_view bytes);

/// The same as text of UTF-8, for files that others read: bytes that are none become \xff, too.
std::string portable(std::string_view bytes);

}  // namespace plenvorith
