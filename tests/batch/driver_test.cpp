#include "batch/driver.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "batch/state/names.h"
#include "batch/state/state.h"
#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
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
    fs::create_directories(dir / "in/sub");
    test::writeFile(dir / "in/a.stp", test::kTriangleStep);
    test::writeFile(dir / "in/sub/b.step", std::string(test::kTriangleStep) + "\n");
    options.inputs = {dir / "in"};
    options.output = dir / "out";
  }

  int run() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runDriver(options, {"arguments"});
    complaints = testing::internal::GetCapturedStderr();
    printed = testing::internal::GetCapturedStdout();
    return status;
  }

  bool isThere(const std::string& name) const {
    return fs::exists(dir / name);
  }

  const test::ScopedSignals before;
  test::TempDir dir;
  Options options;
  std::string printed;
  std::string complaints;
};

TEST_F(DriverTest, ConvertsAFolder) {
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(printed, StartsWith("Converted: 2 (2 triangles)\nFailed: 0\nTime: "));
  EXPECT_EQ(complaints, "");
  EXPECT_EQ(test::readFile(dir / "out/a.stp.stl").size(), 134U);
  EXPECT_EQ(test::readFile(dir / "out/sub/b.step.stl").size(), 134U);
  EXPECT_TRUE(isThere("out/index.html"));
  EXPECT_THAT(namesInFolder(dir / "out/.plenvorith-batch"),
              testing::UnorderedElementsAre("lock", "state.db"));
}

TEST_F(DriverTest, NotesTheRun) {
  EXPECT_EQ(run(), 0);
  const State state = test::openedState(placesIn(dir / "out").database, StateUse::Read);
  const auto runs = allRuns(*state);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs[0].result, "finished");
  EXPECT_THAT(runs[0].arguments, ElementsAre("arguments"));
  EXPECT_EQ(runs[0].base, dir / "in/");
  EXPECT_EQ(runs[0].start.size(), std::string("2026-03-31T12:00:00Z").size());
  EXPECT_GE(runs[0].end, runs[0].start);
}

TEST_F(DriverTest, ResumeConvertsOnlyWhatIsNotConverted) {
  EXPECT_EQ(run(), 0);
  test::writeFile(dir / "in/c.stp", test::kTriangleStep);
  options.resume = true;
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(printed, StartsWith("Converted: 1 (1 triangles)\nConverted before: 2\nFailed: 0\n"));
}

TEST_F(DriverTest, TellsOfFailuresByItsStatus) {
  test::writeFile(dir / "in/c.stp", "no STEP");
  EXPECT_EQ(run(), 1);
  EXPECT_THAT(printed, HasSubstr("Failed: 1\n  1 not a STEP file (no ISO-10303-21)\n    c.stp: "));
  EXPECT_THAT(complaints, StartsWith("failed: c.stp: not a STEP file"));
  EXPECT_TRUE(isThere("out/a.stp.stl"));
}

TEST_F(DriverTest, ChangesNothingWhenItIsToTellOnly) {
  options.dryRun = true;
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(printed, "would convert: " + (dir / "in/a.stp") + " to " + (dir / "out/a.stp.stl") +
                         "\nwould convert: " + (dir / "in/sub/b.step") + " to " +
                         (dir / "out/sub/b.step.stl") + "\nTo convert: 2\n");
  EXPECT_FALSE(isThere("out"));
}

TEST_F(DriverTest, PrunesAndExportsWithoutInputs) {
  EXPECT_EQ(run(), 0);
  fs::remove(dir / "in/a.stp");
  options.inputs.clear();
  options.prune = true;
  options.exportPath = dir / "all.csv";
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(printed, "Pruned: 1\nReport: " + (dir / "out/index.html") + "\n");
  EXPECT_FALSE(isThere("out/a.stp.stl"));
  EXPECT_TRUE(isThere("out/sub/b.step.stl"));
  const std::string table = test::readFile(dir / "all.csv");
  EXPECT_THAT(table, HasSubstr("b.step"));
  EXPECT_THAT(table, Not(HasSubstr("a.stp")));
}

TEST_F(DriverTest, RefusesWhatItCannotBegin) {
  fs::create_directory(dir / "empty");
  options.inputs = {dir / "empty"};
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(complaints, "plenvorith-batch: no STEP file found\n");

  options.inputs = {dir / "in"};
  options.settings.program = dir / "missing";
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(complaints, "plenvorith-batch: no program " + (dir / "missing") + "\n");

  options.settings.program.clear();
  options.merge = true;
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(complaints, "plenvorith-batch: no shards in " + (dir / "out") + "\n");

  options.merge = false;
  options.prune = true;
  options.inputs.clear();
  EXPECT_EQ(run(), 2);
  EXPECT_EQ(complaints, "plenvorith-batch: no state of earlier runs in " + (dir / "out") + "\n");

  options.prune = false;
  options.inputs = {dir / "in"};
  options.output = dir / "in";
  options.settings.to = "stp";
  EXPECT_EQ(run(), 2);
  EXPECT_THAT(complaints, HasSubstr("choose another DIR"));
  EXPECT_FALSE(isThere("out"));
}

}  // namespace
}  // namespace plenvorith
