#include "batch/local/conversions.h"

#include <csignal>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
#include "tests/support/scoped_signals.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// A run of two files with its state.
class ConversionsTest : public testing::Test {
 protected:
  ConversionsTest() {
    context.places = placesIn(dir / "out");
    context.base = dir.path().string() + '/';
    EXPECT_TRUE(makeFolders(context.places.state));
    for (const char* const name : {"a.stp", "b.stp"}) {
      files.push_back({test::writeFile(dir / name, "input"), 5});
    }
    open(StateUse::Write);
  }

  void open(StateUse use) {
    state.reset();
    state = test::openedState(context.places.database, use);
  }

  Conversions begin() {
    return beginConversions(options, *state, context, files, summary);
  }

  /// The result of one of the files, which made an output of four bytes if it is converted.
  Finished resultOf(std::size_t file, bool isConverted) {
    Finished finished;
    finished.input = files[file].path;
    finished.outFolder = dir / "work" + std::to_string(file);
    finished.result.id = static_cast<std::int64_t>(file);
    finished.result.isConverted = isConverted;
    finished.outputName = (file == 0 ? "a.stp.stl" : "b.stp.stl");
    if (isConverted) {
      finished.result.triangles = 3;
      finished.result.outputs = {{finished.outputName, 4}};
      EXPECT_TRUE(makeFolders(finished.outFolder));
      test::writeFile(finished.outFolder + '/' + finished.result.outputs[0].path, "1234");
    } else {
      finished.result.reason = "why";
    }
    return finished;
  }

  const test::ScopedSignals before;
  test::TempDir dir;
  Options options;
  RunContext context;
  std::vector<InputFile> files;
  Summary summary;
  State state;
};

TEST_F(ConversionsTest, BeginsWithNothingDone) {
  options.bar = true;
  const Conversions conversions = begin();
  EXPECT_EQ(conversions.progress.files, 2);
  EXPECT_EQ(conversions.progress.bytes, 10);
  EXPECT_EQ(conversions.progress.done, 0);
  EXPECT_TRUE(conversions.display.isLine);
  EXPECT_FALSE(isOver(conversions));
}

TEST_F(ConversionsTest, SettlesResultsAndTellsOfFailures) {
  Conversions conversions = begin();
  conversions.unsettled = {resultOf(1, true), resultOf(0, false)};
  testing::internal::CaptureStderr();
  const std::vector<Finished> settled = settleResults(conversions, true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "failed: a.stp: why\n");
  ASSERT_THAT(settled, SizeIs(2));
  EXPECT_EQ(settled[0].input, files[1].path);
  EXPECT_EQ(settled[0].outFolder, dir / "work1");
  EXPECT_THAT(conversions.unsettled, IsEmpty());
  EXPECT_EQ(conversions.progress.done, 2);
  EXPECT_EQ(conversions.progress.failed, 1);
  EXPECT_EQ(conversions.progress.doneBytes, 10);
  EXPECT_EQ(summary.converted, 1);
  EXPECT_EQ(summary.triangles, 3);
  EXPECT_EQ(summary.failures.find("why")->second.count, 1);
  EXPECT_EQ(findFile(*state, files[1].path)->status, FileStatus::Converted);
  EXPECT_EQ(test::readFile(dir / "out/b.stp.stl"), "1234");
}

TEST_F(ConversionsTest, SettlesManyTogetherUnlessItIsUrgent) {
  Conversions conversions = begin();
  conversions.unsettled = {resultOf(0, true)};
  EXPECT_THAT(settleResults(conversions, false), IsEmpty());
  EXPECT_THAT(conversions.unsettled, SizeIs(1));
  EXPECT_EQ(conversions.refusals, 0);
  conversions.settledAt -= std::chrono::seconds(2);
  EXPECT_THAT(settleResults(conversions, false), SizeIs(1));
}

TEST_F(ConversionsTest, SettlesNothingWhereNothingHasCome) {
  Conversions conversions = begin();
  EXPECT_THAT(settleResults(conversions, true), IsEmpty());
  EXPECT_EQ(conversions.refusals, 0);
}

TEST_F(ConversionsTest, KeepsResultsThatTheStateRefuses) {
  open(StateUse::Read);
  Conversions conversions = begin();
  conversions.unsettled = {resultOf(0, true)};
  EXPECT_THAT(settleResults(conversions, true), IsEmpty());
  EXPECT_THAT(settleResults(conversions, true), IsEmpty());
  EXPECT_EQ(conversions.refusals, 2);
  EXPECT_THAT(conversions.unsettled, SizeIs(1));
  EXPECT_EQ(conversions.progress.done, 0);
  EXPECT_FALSE(isOver(conversions));
  giveUpOnState(conversions);
  EXPECT_TRUE(isOver(conversions));
  EXPECT_THAT(conversions.end.problem, testing::StartsWith("the state cannot be written: "));
  EXPECT_THAT(conversions.end.problem, HasSubstr("readonly"));
}

TEST_F(ConversionsTest, ForgetsRefusalsWhenTheStateTakesResults) {
  Conversions conversions = begin();
  conversions.refusals = 3;
  conversions.unsettled = {resultOf(0, true)};
  EXPECT_THAT(settleResults(conversions, true), SizeIs(1));
  EXPECT_EQ(conversions.refusals, 0);
}

TEST_F(ConversionsTest, IsOverAfterASignal) {
  Conversions conversions = begin();
  takeSignal(conversions);
  EXPECT_FALSE(isOver(conversions));
  kill(getpid(), SIGHUP);
  takeSignal(conversions);
  EXPECT_EQ(conversions.end.signal, SIGHUP);
  takeSignal(conversions);
  EXPECT_TRUE(isOver(conversions));
}

TEST_F(ConversionsTest, ShowsTheLastStateOnALine) {
  options.bar = true;
  Conversions conversions = begin();
  testing::internal::CaptureStderr();
  showConversions(conversions);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // it is too early for that
  testing::internal::CaptureStderr();
  endConversions(conversions);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\r\x1b[K0/2 files, 0 failed\n");
}

}  // namespace
}  // namespace plenvorith
