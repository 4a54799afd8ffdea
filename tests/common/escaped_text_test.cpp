#include "common/escaped_text.h"

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

TEST(Printable, EscapesControlCharactersAndBackslashes) {
  EXPECT_EQ(printable("a\nb\tc\\d\x1b[31m\x7f\x01"), "a\\nb\\tc\\\\d\\x1b[31m\\x7f\\x01");
  EXPECT_EQ(printable("größe \xff"), "größe \xff");
  EXPECT_EQ(printable(""), "");
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
