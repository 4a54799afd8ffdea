// Runs at the same moment.

#include <future>
#include <string>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"
#include "tests/support/stl_file.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;

TEST(TwoRuns, DoNotMeetWhenTheirInputsHaveDifferentNames) {
  const Sandbox dir;
  dir.write("a.step", appendEntities(box(), paired()));
  dir.write("b.step", appendEntities(dataFile("parts.step"), paired()));
  for (int round = 0; round < 5; ++round) {
    auto first = std::async(std::launch::async, [&] { return runIn(dir, {"a.step", "a.stl"}); });
    const Outcome b = runIn(dir, {"b.step", "b.stl"});
    EXPECT_EQ(first.get().exitStatus, 0);
    EXPECT_EQ(b.exitStatus, 0);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("a.stl"))), 6000);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("b.stl"))), 6250);
  }
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
}

TEST(TwoRuns, DoNotMeetWhenTheyHaveDifferentTemporaryDirectories) {
  const Sandbox dir;
  dir.makeDirectory("a");
  dir.makeDirectory("b");
  dir.makeDirectory("tmp2");
  dir.write("a/in.step", appendEntities(box(), paired()));
  dir.write("b/in.step", appendEntities(dataFile("parts.step"), paired()));
  for (int round = 0; round < 5; ++round) {
    auto first = std::async(std::launch::async, [&] { return runIn(dir, {"a/in.step", "a.stl"}); });
    const Outcome b = runIn(dir, {"b/in.step", "b.stl"}, {.environment = {"TMPDIR=tmp2"}});
    EXPECT_EQ(first.get().exitStatus, 0);
    EXPECT_EQ(b.exitStatus, 0);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("a.stl"))), 6000);
    EXPECT_EQ(volumeOf(recordsOf(dir.read("b.stl"))), 6250);
  }
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
  EXPECT_TRUE(fs::is_empty(dir / "tmp2"));
}

}  // namespace
}  // namespace plenvorith::test
