#include "batch/report/json_text.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

TEST(JsonText, QuotesPlainText) {
  EXPECT_EQ(jsonText(""), R"("")");
  EXPECT_EQ(jsonText("a b/c.stp"), R"("a b/c.stp")");
}

TEST(JsonText, EscapesWhatEndsAStringOrAScript) {
  EXPECT_EQ(jsonText(R"(say "hi"\)"), R"("say \"hi\"\\")");
  EXPECT_EQ(jsonText("</script><!--"), R"("\u003c/script>\u003c!--")");
  EXPECT_EQ(jsonText(std::string_view("\0\n\t\x1f\x7f", 5)), R"("\u0000\u000a\u0009\u001f\u007f")");
}

TEST(JsonText, KeepsUtf8) {
  EXPECT_EQ(jsonText("größe 部品 😀"), "\"größe 部品 😀\"");
}

TEST(JsonText, WritesOtherBytesAsLoneSurrogates) {
  EXPECT_EQ(jsonText("a\xff"), R"("a\udcff")");
  EXPECT_EQ(jsonText("\xc3"), R"("\udcc3")");                                // ends too early
  EXPECT_EQ(jsonText("\xc0\xaf"), R"("\udcc0\udcaf")");                      // overlong
  EXPECT_EQ(jsonText("\xed\xa0\x80"), R"("\udced\udca0\udc80")");            // a surrogate
  EXPECT_EQ(jsonText("\xf4\x90\x80\x80"), R"("\udcf4\udc90\udc80\udc80")");  // beyond the last
  EXPECT_EQ(jsonText("\x80\xc3\xa4"), "\"\\udc80ä\"");
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
std::string slowJsonText(const std::string& bytes) {
  std::string text = "\"";
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t length = 2;
    while (length <= 4 && validSequences().count(bytes.substr(i, length)) == 0) {
      ++length;
    }
    if (length <= 4) {
      text += bytes.substr(i, length);
      i += length;
    } else {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      text += "\\udc";
      text += "0123456789abcdef"[byte / 16];
      text += "0123456789abcdef"[byte % 16];
      ++i;
    }
  }
  return text + '"';
}

TEST(JsonText, AgreesWithTheSlowVersionOnAllShortTexts) {
  std::vector<std::string> bytes;
  for (const char byte : kBytes) {
    bytes.emplace_back(1, byte);
  }
  test::forEveryString(bytes, 4, [](const std::string& text) {
    ASSERT_EQ(jsonText(text), slowJsonText(text)) << testing::PrintToString(text);
  });
}

}  // namespace
}  // namespace plenvorith
