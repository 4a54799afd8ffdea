#include "batch/system/text.h"

#include <string>

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

TEST(LastLineOf, SkipsClosingWordAndEmptyLines) {
  EXPECT_EQ(lastLineOf("one\nError: two\nFailed\n"), "Error: two");
  EXPECT_EQ(lastLineOf("one\n  two  \n\n \nDone\n"), "two  ");
  EXPECT_EQ(lastLineOf("without an end"), "without an end");
  EXPECT_EQ(lastLineOf("Failed\n"), "");
  EXPECT_EQ(lastLineOf("\n\n"), "");
  EXPECT_EQ(lastLineOf(""), "");
  EXPECT_EQ(lastLineOf("Failed to read STEP\nFailed\n"), "Failed to read STEP");
}

TEST(ReasonWithLine, LeavesOutWhatIsEmpty) {
  EXPECT_EQ(reasonWithLine("empty", ""), "empty");
  EXPECT_EQ(reasonWithLine("", "line"), "line");
  EXPECT_EQ(reasonWithLine("disk full", "Failed to write STEP"),
            "disk full (Failed to write STEP)");
}

TEST(SizeText, HasTwoOrThreeDigitsAndAUnit) {
  EXPECT_EQ(sizeText(0), "0 B");
  EXPECT_EQ(sizeText(999), "999 B");
  EXPECT_EQ(sizeText(1000), "1.0 kB");
  EXPECT_EQ(sizeText(9949), "9.9 kB");
  EXPECT_EQ(sizeText(9960), "10 kB");
  EXPECT_EQ(sizeText(999600), "1.0 MB");
  EXPECT_EQ(sizeText(15000000), "15 MB");
  EXPECT_EQ(sizeText(4000000000000), "4.0 TB");
}

TEST(DurationText, HasTheTwoLargestUnits) {
  EXPECT_EQ(durationText(0), "0 s");
  EXPECT_EQ(durationText(59), "59 s");
  EXPECT_EQ(durationText(200), "3 min 20 s");
  EXPECT_EQ(durationText(7500), "2 h 5 min");
  EXPECT_EQ(durationText(360000), "4 d 4 h");
}

TEST(FixedText, Rounds) {
  EXPECT_EQ(fixedText(1.25, 1), "1.2");
  EXPECT_EQ(fixedText(2.96, 1), "3.0");
  EXPECT_EQ(fixedText(1e20, 0), "100000000000000000000");
}

}  // namespace
}  // namespace plenvorith
