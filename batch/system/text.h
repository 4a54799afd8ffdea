#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace plenvorith {

/// The last line of a transcript that tells something: not empty, and not the closing word; without
/// the blanks in front.
std::string lastLineOf(std::string_view transcript);

/// What a person is told about a failure: the reason and, behind it, the line of the transcript.
std::string reasonWithLine(const std::string& reason, const std::string& lastLine);

/// A number of bytes in at most four digits and a unit: "512 B", "1.5 MB" (powers of 1000).
std::string sizeText(std::int64_t bytes);

/// A time in its two largest units: "45 s", "3 min 20 s", "2 h 5 min", "3 d 4 h".
std::string durationText(std::int64_t seconds);

/// A number with this many digits behind the point, whatever the locale.
std::string fixedText(double number, int digits);

}  // namespace plenvorith
