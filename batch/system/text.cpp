#include "batch/system/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace plenvorith {
namespace {

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void appendEscaped(std::string& text, char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  text.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
}

/// The length of the character of UTF-8 that begins the bytes; 0 if none does.
std::size_t characterLength(std::string_view bytes) {
  const auto byteAt = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char first = byteAt(0);
  const std::size_t length = first < 0x80                     ? 1
                             : first >= 0xC2 && first <= 0xDF ? 2
                             : first >= 0xE0 && first <= 0xEF ? 3
                             : first >= 0xF0 && first <= 0xF4 ? 4
                                                              : 0;
  if (length == 0 || length > bytes.size()) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0U) != 0x80U) {
      return 0;
    }
  }
  // Longer than need be, half of a pair, or beyond the last character.
  const bool isWrong = (first == 0xE0 && byteAt(1) < 0xA0) || (first == 0xED && byteAt(1) > 0x9F) ||
                       (first == 0xF0 && byteAt(1) < 0x90) || (first == 0xF4 && byteAt(1) > 0x8F);
  return isWrong ? 0 : length;
}

std::string twoUnits(std::int64_t large, const char* largeUnit, std::int64_t small,
                     const char* smallUnit) {
  return std::to_string(large) + largeUnit + std::to_string(small) + smallUnit;
}

}  // namespace

std::string printable(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    switch (c) {
      case '\\':
        text += "\\\\";
        break;
      case '\n':
        text += "\\n";
        break;
      case '\t':
        text += "\\t";
        break;
      default:
        if (isControl(c)) {
          appendEscaped(text, c);
        } else {
          text += c;
        }
    }
  }
  return text;
}

std::string portable(std::string_view bytes) {
  const std::string text = printable(bytes);
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = characterLength(std::string_view(text).substr(i));
    if (length == 0) {
      appendEscaped(result, text[i]);
    } else {
      result.append(text, i, length);
    }
    i += std::max(length, std::size_t{1});
  }
  return result;
}

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
