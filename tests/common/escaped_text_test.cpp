#include "common/escaped_text.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace plenvorith
