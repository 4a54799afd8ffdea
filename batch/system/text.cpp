#include "batch/system/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace plenvorith {
namespace {

std::string twoUnits(std::int64_t large, const char* largeUnit, std::int64_t small,
                     const char* smallUnit) {
  return std::to_string(large) + largeUnit + std::to_string(small) + smallUnit;
}

}  // namespace

std::string lastLineOf(std::string_view transcript) {
  while (!transcript.empty()) {
    const std::size_t end = transcript.find_last_not_of('\n');
    if (end == std::string_view::npos) {
      break;
    }
    transcript = transcript.substr(0, end + 1);
    const std::size_t before = transcript.rfind('\n');
    std::string_view line = transcript.substr(before + 1);  // from 0 on, if there is none
    const std::size_t start = line.find_first_not_of(' ');
    if (start != std::string_view::npos && line != "Failed" && line != "Done") {
      return std::string(line.substr(start));
    }
    transcript = transcript.substr(0, transcript.size() - line.size());
  }
  return {};
}

std::string reasonWithLine(const std::string& reason, const std::string& lastLine) {
  if (reason.empty() || lastLine.empty()) {
    return reason + lastLine;
  }
  return reason + " (" + lastLine + ")";
}

std::string sizeText(std::int64_t bytes) {
  constexpr std::array<const char*, 5> kUnits = {" B", " kB", " MB", " GB", " TB"};
  double number = static_cast<double>(bytes);
  std::size_t unit = 0;
  while (number >= 999.5 && unit + 1 < kUnits.size()) {
    number /= 1000;
    ++unit;
  }
  return fixedText(number, unit > 0 && number < 9.95 ? 1 : 0) + kUnits[unit];
}

std::string durationText(std::int64_t seconds) {
  constexpr std::int64_t kMinute = 60;
  constexpr std::int64_t kHour = 60 * kMinute;
  constexpr std::int64_t kDay = 24 * kHour;
  if (seconds < kMinute) {
    return std::to_string(seconds) + " s";
  }
  if (seconds < kHour) {
    return twoUnits(seconds / kMinute, " min ", seconds % kMinute, " s");
  }
  if (seconds < kDay) {
    return twoUnits(seconds / kHour, " h ", seconds % kHour / kMinute, " min");
  }
  return twoUnits(seconds / kDay, " d ", seconds % kDay / kHour, " h");
}

std::string fixedText(double number, int digits) {
  std::array<char, 512> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number,
                                    std::chars_format::fixed, digits);
  return {text.data(), result.ptr};
}

}  // namespace plenvorith
