#include "batch/driver.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "batch/folder.h"
#include "batch/names.h"
#include "batch/state.h"
#include "tests/support/scoped_signals.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A folder of inputs, and what a driver does with it.
class DriverTest : public testing::Test {
 protected:
  DriverTest() {
    fs::create_directories(dir_ / "in/sub");
    test::writeFile(dir_ / "in/a.stp", test::kTriangleStep);
    test::writeFile(dir_ / "in/sub/b.step", test::kTriangleStep);
    options_.inputs = {dir_ / "in"};
    options_.output = dir_ / "out";
  }

  int run() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runDriver(options_, {"arguments"});
    stderr_ = testing::internal::GetCapturedStderr();
    stdout_ = testing::internal::GetCapturedStdout();
    return status;
  }

  bool isThere(const std::string& name) const {
    return fs::exists(dir_ / name);
  }

  const test::ScopedSignals before_;
  test::TempDir dir_;
  Options options_;
  std::string stdout_;
  std::string stderr_;
};

TEST_F(DriverTest, ConvertsAFolder) {
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(stdout_, StartsWith("Converted: 2 (2 triangles)\nFailed: 0\nTime: "));
  EXPECT_EQ(stderr_, "");
  EXPECT_EQ(test::readFile(dir_ / "out/a.stp.stl").size(), 134U);
  EXPECT_EQ(test::readFile(dir_ / "out/sub/b.step.stl").size(), 134U);
  EXPECT_TRUE(isThere("out/index.html"));
  EXPECT_THAT(namesInFolder(dir_ / "out/.plenvorith-batch"),
              testing::UnorderedElementsAre("lock", "state.db", "transcripts"));
}

TEST_F(DriverTest, NotesTheRun) {
  EXPECT_EQ(run(), 0);
  std::string problem;
  const State state = openState(placesIn(dir_ / "out").database, problem, StateUse::Read);
  ASSERT_NE(state, nullptr) << problem;
  const auto runs = allRuns(*state);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs[0].result, "finished");
  EXPECT_THAT(runs[0].arguments, ElementsAre("arguments"));
  EXPECT_EQ(runs[0].base, dir_ / "in/");
  EXPECT_EQ(runs[0].start.size(), std::string("2026-03-31T12:00:00Z").size());
  EXPECT_GE(runs[0].end, runs[0].start);
}

TEST_F(DriverTest, ResumeConvertsOnlyWhatIsNotConverted) {
  EXPECT_EQ(run(), 0);
  test::writeFile(dir_ / "in/c.stp", test::kTriangleStep);
  options_.resume = true;
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(stdout_, StartsWith("Converted: 1 (1 triangles)\nConverted before: 2\nFailed: 0\n"));
}

TEST_F(DriverTest, TellsOfFailuresByItsStatus) {
  test::writeFile(dir_ / "in/c.stp", "no STEP");
  EXPECT_EQ(run(), 1);
  EXPECT_THAT(stdout_, HasSubstr("Failed: 1\n  " + (dir_ / "in/c.stp") + ": not a STEP file"));
  EXPECT_THAT(stderr_, StartsWith("failed: " + (dir_ / "in/c.stp") + ": not a STEP file"));
  EXPECT_TRUE(isThere("out/a.stp.stl"));
}

TEST_F(DriverTest, ChangesNothingWhenItIsToTellOnly) {
  options_.dryRun = true;
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(stdout_, "would convert: " + (dir_ / "in/a.stp") + " to " + (dir_ / "out/a.stp.stl") +
                         "\nwould convert: " + (dir_ / "in/sub/b.step") + " to " +
                         (dir_ / "out/sub/b.step.stl") + "\nTo convert: 2\n");
  EXPECT_FALSE(isThere("out"));
}

TEST_F(DriverTest, PrunesAndExportsWithoutInputs) {
  EXPECT_EQ(run(), 0);
  fs::remove(dir_ / "in/a.stp");
  options_.inputs.clear();
  options_.prune = true;
  options_.exportPath = dir_ / "all.csv";
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(stdout_, "Pruned: 1\nReport: " + (dir_ / "out/index.html") + "\n");
  EXPECT_FALSE(isThere("out/a.stp.stl"));
  EXPECT_TRUE(isThere("out/sub/b.step.stl"));
  const std::string table = test::readFile(dir_ / "all.csv");
  EXPECT_THAT(table, HasSubstr("b.step"));
  EXPECT_THAT(table, Not(HasSubstr("a.stp")));
}

TEST_F(DriverTest, RefusesWhatItCannotBegin) {
  fs::create_directory(dir_ / "empty");
  options_.inputs = {dir_ / "empty"};
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(stderr_, "plenvorith-batch: no STEP file found\n");

  options_.inputs = {dir_ / "in"};
  options_.settings.program = dir_ / "missing";
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(stderr_, "plenvorith-batch: no program " + (dir_ / "missing") + "\n");

  options_.settings.program.clear();
  options_.merge = true;
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(stderr_, "plenvorith-batch: no shards in " + (dir_ / "out") + "\n");

  options_.merge = false;
  options_.prune = true;
  options_.inputs.clear();
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(stderr_, "plenvorith-batch: no state of earlier runs in " + (dir_ / "out") + "\n");

  options_.prune = false;
  options_.inputs = {dir_ / "in"};
  options_.output = dir_ / "in";
  options_.settings.to = "stp";
  EXPECT_EQ(run(), 2);
  EXPECT_THAT(stderr_, HasSubstr("choose another DIR"));
  EXPECT_FALSE(isThere("out"));
}

}  // namespace
}  // namespace plenvorith
