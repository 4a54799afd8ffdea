#include "common/escaped_text.h"

#include <algorithm>

namespace plenvorith {
namespace {

bool isControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

void appendHex(std::string& text, const char* front, char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  text.append(front).append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
}

/// Escapes what would steer a terminal, the controls of C0 and C1. A terminal that knows no UTF-8
/// takes single bytes for the latter. All other bytes that are no UTF-8 are escaped if it is strict.
std::string escape(std::string_view bytes, bool isStrict) {
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t length = characterLength(bytes.substr(i));
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte == '\\' || byte == '\n' || byte == '\t') {
      text.append(byte == '\\' ? "\\\\" : byte == '\n' ? "\\n" : "\\t");
    } else if (isControl(byte) || (length == 0 && (isStrict || byte < 0xA0))) {
      appendHex(text, "\\x", bytes[i]);
    } else if (length == 2 && byte == 0xC2 && static_cast<unsigned char>(bytes[i + 1]) < 0xA0) {
      appendHex(text, "\\u00", bytes[i + 1]);
    } else {
      text.append(bytes, i, std::max(length, std::size_t{1}));
    }
    i += std::max(length, std::size_t{1});
  }
  return text;
}

}  // namespace

std::size_t characterLength(std::string_view bytes) {
  const auto isBetween = [bytes](std::size_t i, unsigned low, unsigned high) {
    const unsigned byte = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U;
    return byte >= low && byte <= high;
  };
  const unsigned lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) {
    return 1;
  }
  if (lead < 0xC2 || lead > 0xF4) {
    return 0;
  }
  // The second byte tells what is longer than need be, half of a pair or beyond the last character.
  const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  bool isWhole = isBetween(1, low, high);
  for (std::size_t next = 2; next < length; ++next) {
    isWhole = isWhole && isBetween(next, 0x80, 0xBF);
  }
  return isWhole ? length : 0;
}

std::string printable(std::string_view bytes) {
  return escape(bytes, false);
}

std::string portable(std::string_view bytes) {
  return escape(bytes, true);
}

}  // namespace plenvorith
