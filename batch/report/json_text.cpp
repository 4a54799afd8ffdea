#include "batch/report/json_text.h"

#include <cstddef>

#include "common/escaped_text.h"

namespace plenvorith {
namespace {

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
      const std::size_t length = characterLength(bytes.substr(i));
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
