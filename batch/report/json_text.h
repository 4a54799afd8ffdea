#pragma once

#include <string>
#include <string_view>

namespace plenvorith {

/// A text of any bytes as a JSON string, with its quotation marks.
///
/// Gives  valid UTF-8 as it is, but for control characters, quotation mark and backslash, and for
///        "<", so that the string can stand in the script element of an HTML page; a byte b that
///        belongs to no valid UTF-8 as the escape of the lone surrogate 0xDC00 + b. So no two
///        texts give the same string.
std::string jsonText(std::string_view bytes);

}  // namespace plenvorith
