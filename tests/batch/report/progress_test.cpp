#include "batch/report/progress.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

ProgressState middle() {
  ProgressState state;
  state.files = 400;
  state.done = 100;
  state.failed = 2;
  state.bytes = 40000000;
  state.doneBytes = 10000000;
  state.seconds = 50;
  state.largest = "sub/x\n.stp";
  state.largestBytes = 15000000;
  return state;
}

TEST(ProgressLine, TellsHowFarAndHowLong) {
  EXPECT_EQ(progressLine(middle(), 0),
            "100/400 files, 2 failed, 2.0 files/s, 200 kB/s, 2 min 30 s left, "
            "now sub/x\\n.stp (15 MB)");
}

TEST(ProgressLine, CountsTheTimeLeftByBytes) {
  ProgressState state = middle();
  state.doneBytes = 39000000;
  EXPECT_NE(progressLine(state, 0).find(", 1 s left"), std::string::npos);
}

TEST(ProgressLine, LeavesOutWhatItCannotKnow) {
  ProgressState state;
  state.files = 3;
  EXPECT_EQ(progressLine(state, 0), "0/3 files, 0 failed");
  state.done = 3;
  state.seconds = 2;
  state.bytes = state.doneBytes = 3000;
  EXPECT_EQ(progressLine(state, 0), "3/3 files, 0 failed, 1.5 files/s, 1.5 kB/s");
}

TEST(ProgressLine, LeavesOutWhatIsLeastWantedWhereItIsNarrow) {
  ProgressState state = middle();
  state.largest = "folder/name.stp";
  const std::string rate = "100/400 files, 2 failed, 2.0 files/s, 200 kB/s, 2 min 30 s left";
  EXPECT_EQ(progressLine(state, 92), rate + ", now folder/name.stp (15 MB)");
  EXPECT_EQ(progressLine(state, 91), rate + ", now ...er/name.stp (15 MB)");
  EXPECT_EQ(progressLine(state, 89), rate + ", now .../name.stp (15 MB)");
  EXPECT_EQ(progressLine(state, 88), rate);
  EXPECT_EQ(progressLine(state, 63), rate);
  EXPECT_EQ(progressLine(state, 62), "100/400 files, 2 failed, 2 min 30 s left");
  EXPECT_EQ(progressLine(state, 40), "100/400 files, 2 failed, 2 min 30 s left");
  EXPECT_EQ(progressLine(state, 39), "100/400 files, 2 failed");
  EXPECT_EQ(progressLine(state, 22), "100/400 files, 2 faile");
}

TEST(ProgressLine, IsNeverWiderThanTheTerminal) {
  ProgressState state = middle();
  state.largest = "größe 部品/größe.stp";
  for (int width = 1; width < 200; ++width) {
    EXPECT_LE(progressLine(state, width).size(), static_cast<std::size_t>(width));
  }
}

TEST(ProgressLine, CutsNamesBetweenCharacters) {
  ProgressState state;
  state.largest = "ößgrößegröße";
  const std::string front = "0/0 files, 0 failed, now ";
  const auto lineWithName = [&](std::size_t bytes) {
    return progressLine(state, static_cast<int>(front.size() + bytes + 6));
  };
  EXPECT_EQ(lineWithName(18), front + "ößgrößegröße (0 B)");
  EXPECT_EQ(lineWithName(15), front + "...ößegröße (0 B)");
  EXPECT_EQ(lineWithName(14), front + "...ßegröße (0 B)");
  EXPECT_EQ(lineWithName(13), front + "...ßegröße (0 B)");
}

TEST(ShowProgress, PrintsALineOnlyOnceAMinuteWithoutATerminal) {
  ProgressDisplay display;
  ProgressState state = middle();
  testing::internal::CaptureStderr();
  state.seconds = 59;
  showProgress(display, state);
  state.seconds = 61;
  showProgress(display, state);
  state.seconds = 100;
  showProgress(display, state);
  endProgress(display, state);
  state.seconds = 61;
  EXPECT_EQ(testing::internal::GetCapturedStderr(), progressLine(state, 0) + "\n");
}

TEST(ShowMessage, ClearsTheLineFirst) {
  ProgressDisplay display;
  display.isDrawn = true;
  testing::internal::CaptureStderr();
  showMessage(display, "failed: x");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\r\x1b[Kfailed: x\n");
}

}  // namespace
}  // namespace plenvorith
