#include "batch/system/text.h"

#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

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
