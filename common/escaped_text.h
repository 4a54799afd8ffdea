#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace plenvorith {

/// The length of the character of UTF-8 that begins the bytes, of which there is one at least; 0 if
/// none does.
std::size_t characterLength(std::string_view bytes);

/// Bytes as text for one line of a terminal or a log: control characters as \n, \t, \x1b and, from
/// U+0080 to U+009F, \u009b; a backslash as two, all other bytes as they are.
std::string printable(std::string_view bytes);

/// The same as text of UTF-8, for files that others read: bytes that are none become \xff, too.
std::string portable(std::string_view bytes);

}  // namespace plenvorith
