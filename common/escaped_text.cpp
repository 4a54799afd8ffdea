#include "common/escaped_text.h"

#include <algorithm>
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

}  // namespace plenvorith
