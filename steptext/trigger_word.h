#pragma once

#include <cstddef>
#include <string_view>

namespace plenvorith {

/// The number of characters of the longest trigger word.
inline constexpr std::size_t kLongestTriggerWord = std::string_view("COMPLEX_TRIANGULATED_").size();

/// Whether `text` holds "TESSELLATED_" or "COMPLEX_TRIANGULATED_", the words that say that there
/// may be tessellation to strip from a file.
///
/// Any place counts: a type that is not stripped, a string, the header. A word holds no line feed,
/// so lines need not be told apart.
bool holdsTriggerWord(std::string_view text);

}  // namespace plenvorith
