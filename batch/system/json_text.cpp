#include "batch/system/json_text.h"

#include <cstddef>

namespace plenvorith {
namespace {

bool isBetween(std::string_view bytes, std::size_t i, unsigned low, unsigned high) {
  return i < bytes.size() && static_cast<unsigned char>(bytes[i]) >= low &&
         static_cast<unsigned char>(bytes[i]) <= high;
}

/// The length of the valid UTF-8 sequence of more than one byte that starts at i; 0 if there is
/// none. The second byte tells overlong forms, surrogates and what lies beyond the last code point.
std::size_t sequenceLength(std::string_view bytes, std::size_t i) {
  const unsigned lead = static_cast<unsigned char>(bytes[i]);
  if (lead < 0xC2 || lead > 0xF4) {
    return 0;
  }
  const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (!isBetween(bytes, i + 1, low, high)) {
    return 0;
  }
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  for (std::size_t next = 2; next < length; ++next) {
    if (!isBetween(bytes, i + next, 0x80, 0xBF)) {
      return 0;
    }
  }
  return length;
}

void appendEscape(std::string& text, unsigned code) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  text += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    text += kDigits[(code >> shift) & 0xFU];
  }
}

}  // namespace

std::string jsonText(std::string_view bytes) {
  std::string text = "\"";
  for (std::size_t i = 0; i < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte >= 0x80) {
      const std::size_t length = sequenceLength(bytes, i);
      if (length == 0) {
        appendEscape(text, 0xDC00U + byte);
        ++i;
      } else {
        text += bytes.substr(i, length);
        i += length;
      }
      continue;
    }
    if (byte == '"' || byte == '\\') {
      text += '\\';
      text += bytes[i];
    } else if (byte < 0x20 || byte == 0x7F || byte == '<') {
      appendEscape(text, byte);
    } else {
      text += bytes[i];
    }
    ++i;
  }
  text += '"';
  return text;
}

}  // namespace plenvorith
