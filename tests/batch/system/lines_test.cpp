#include "batch/system/lines.h"

#include <gmock/gmock.h>

#include "batch/system/process.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TakeLines, PutsLinesTogetherFromPieces) {
  std::optional<Pipe> pipe = makePipe();
  ASSERT_TRUE(pipe.has_value());
  std::string text;
  const auto receive = [&](const std::string& piece) {
    EXPECT_TRUE(writeAll(pipe->write.get(), piece));
    EXPECT_TRUE(readMore(pipe->read.get(), text));
    return takeLines(text);
  };
  EXPECT_THAT(receive("fi"), IsEmpty());
  EXPECT_THAT(receive("rst\nsecond\n\nthi"), ElementsAre("first", "second", ""));
  EXPECT_THAT(receive("rd\nhalf"), ElementsAre("third"));
  pipe->write.close();
  EXPECT_FALSE(readMore(pipe->read.get(), text));
  EXPECT_THAT(takeLines(text), IsEmpty());
  EXPECT_EQ(text, "half");
}

TEST(CutOff, GivesWhatStandsBeforeTheEnd) {
  std::string_view text = "a::b";
  EXPECT_EQ(cutOff(text, ':'), "a");
  EXPECT_EQ(cutOff(text, ':'), "");
  EXPECT_EQ(cutOff(text, ':'), "b");
  EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace plenvorith
