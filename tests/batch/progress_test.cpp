#include "batch/progress.h"

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

TEST(ProgressLine, IsCutBetweenCharacters) {
  ProgressState state;
  state.largest = "größe";
  const std::string whole = progressLine(state, 0);
  const auto place = static_cast<int>(whole.find("ö"));
  EXPECT_EQ(progressLine(state, place + 1), whole.substr(0, whole.find("ö")));
  EXPECT_EQ(progressLine(state, place + 2), whole.substr(0, whole.find("ö") + 2));
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
