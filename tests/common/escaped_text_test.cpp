#include "common/escaped_text.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

TEST(Printable, EscapesControlCharactersAndBackslashes) {
  EXPECT_EQ(printable("a\nb\tc\\d\x1b[31m\x7f\x01"), "a\\nb\\tc\\\\d\\x1b[31m\\x7f\\x01");
  EXPECT_EQ(printable("größe \xff"), "größe \xff");
  EXPECT_EQ(printable(""), "");
}

TEST(Printable, EscapesTheControlsThatBeginWithOneCharacterOfC1) {
  EXPECT_EQ(printable("\xc2\x9b"
                      "31m \xc2\x80\xc2\x9f\xc2\xa0"),
            "\\u009b31m \\u0080\\u009f\xc2\xa0");
  // As a terminal takes them that knows no UTF-8; "ě" holds such a byte, but is a letter.
  EXPECT_EQ(printable("\x9b"
                      "31m \x80\x9f\xa0 ě"),
            "\\x9b31m \\x80\\x9f\xa0 ě");
  EXPECT_EQ(portable("\xc2\x9b"), "\\u009b");
}

TEST(Portable, EscapesWhatIsNoUtf8) {
  EXPECT_EQ(portable("größe 部品 \xF0\x9F\x98\x80"), "größe 部品 \xF0\x9F\x98\x80");
  EXPECT_EQ(portable("\xff"), "\\xff");
  EXPECT_EQ(portable("a\xC3"), "a\\xc3");
  EXPECT_EQ(portable("\xC0\xAF"), "\\xc0\\xaf");
  EXPECT_EQ(portable("\xE0\x80\x80"), "\\xe0\\x80\\x80");
  EXPECT_EQ(portable("\xED\xA0\x80"), "\\xed\\xa0\\x80");
  EXPECT_EQ(portable("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
  EXPECT_EQ(portable("\xE2\x82z"), "\\xe2\\x82z");
  EXPECT_EQ(portable("\n\\"), "\\n\\\\");
}

/// The UTF-8 of a code point, as the standard's table has it.
std::string encoded(unsigned code) {
  const auto byte = [](unsigned value) { return static_cast<char>(value); };
  if (code < 0x800) {
    return {byte(0xC0 | code >> 6U), byte(0x80 | (code & 63U))};
  }
  if (code < 0x10000) {
    return {byte(0xE0 | code >> 12U), byte(0x80 | (code >> 6U & 63U)), byte(0x80 | (code & 63U))};
  }
  return {byte(0xF0 | code >> 18U), byte(0x80 | (code >> 12U & 63U)),
          byte(0x80 | (code >> 6U & 63U)), byte(0x80 | (code & 63U))};
}

/// Bytes on both sides of every border in the definition of UTF-8.
const std::string kBytes = "\x80\x8f\x90\x9f\xa0\xbf\xc1\xc2\xdf\xe0\xe1\xed\xef\xf0\xf3\xf4\xf5";

/// Every valid sequence of more than one byte that consists of these bytes.
const std::set<std::string>& validSequences() {
  static const std::set<std::string> sequences = [] {
    std::set<std::string> found;
    for (unsigned code = 0x80; code < 0x110000; ++code) {
      const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
      const std::string sequence = encoded(code);
      if (!isSurrogate && sequence.find_first_not_of(kBytes) == std::string::npos) {
        found.insert(sequence);
      }
    }
    return found;
  }();
  return sequences;
}

/// The slow, obvious version, for texts of these bytes.
std::string slowPortable(const std::string& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto hex = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return std::string{kDigits[byte / 16], kDigits[byte % 16]};
  };
  std::string text;
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t length = 2;
    while (length <= 4 && validSequences().count(bytes.substr(i, length)) == 0) {
      ++length;
    }
    const std::string character = length <= 4 ? bytes.substr(i, length) : "";
    if (character.empty()) {
      text += "\\x" + hex(bytes[i]);
    } else {
      text += character < "\u00a0" ? "\\u00" + hex(character[1]) : character;
    }
    i += std::max(character.size(), std::size_t{1});
  }
  return text;
}

TEST(Portable, AgreesWithTheSlowVersionOnAllShortTexts) {
  std::vector<std::string> bytes;
  for (const char byte : kBytes) {
    bytes.emplace_back(1, byte);
  }
  test::forEveryString(bytes, 4, [](const std::string& text) {
    ASSERT_EQ(portable(text), slowPortable(text)) << testing::PrintToString(text);
  });
}

}  // namespace
}  // namespace plenvorith
