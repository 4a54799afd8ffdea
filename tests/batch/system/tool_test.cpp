#include "batch/system/tool.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using test::TempDir;
using testing::ElementsAre;

ToolStart shellScript(const std::string& script) {
  return {.arguments = {"/bin/sh", "-c", script}};
}

/// Runs shell scripts and gives what came of each.
std::map<std::size_t, ToolResult> runScripts(const std::vector<std::string>& scripts,
                                             std::size_t atOnce, milliseconds limit) {
  std::map<std::size_t, ToolResult> results;
  runTools(
      scripts.size(), atOnce, limit, [&](std::size_t i) { return shellScript(scripts[i]); },
      [&](std::size_t i, const ToolResult& result) {
        EXPECT_TRUE(results.emplace(i, result).second);
        return true;
      });
  return results;
}

TEST(FindTool, LooksIntoTheFoldersOfPathInOrder) {
  const TempDir directory;
  std::filesystem::create_directories(directory / "a");
  std::filesystem::create_directories(directory / "b");
  test::writeFile(directory / "a/plain", "");
  test::writeScript(directory / "b/plain", "");
  test::writeScript(directory / "b/tool", "");
  const test::ScopedEnv path("PATH", (directory / "a") + ":" + (directory / "b"));
  EXPECT_EQ(findTool("tool"), directory / "b/tool");
  EXPECT_EQ(findTool("plain"), directory / "b/plain");  // the other one cannot be run
  EXPECT_EQ(findTool("none"), "");
}

TEST(RunTools, GivesTheOutputOfEach) {
  const auto results =
      runScripts({"echo one; echo unseen >&2", "cat; exit 3", "kill -9 $$"}, 2, minutes(1));
  ASSERT_EQ(results.size(), 3U);
  EXPECT_EQ(results.at(0).output, "one\n");
  EXPECT_TRUE(results.at(0).succeeded);
  EXPECT_EQ(results.at(1).output, "");
  EXPECT_FALSE(results.at(1).succeeded);
  EXPECT_FALSE(results.at(2).succeeded);
}

TEST(RunTool, TakesFolderEnvironmentAndErrors) {
  const TempDir directory;
  ToolStart start = shellScript("pwd; echo $WHAT$HOME; echo wrong >&2");
  start.folder = directory.path();
  start.environment = {"WHAT=that", "HOME=here"};
  EXPECT_EQ(runTool(start, minutes(1)).output, directory.path().string() + "\nthathere\n");
  start.errors = ToolErrors::InOutput;
  EXPECT_EQ(runTool(start, minutes(1)).output, directory.path().string() + "\nthathere\nwrong\n");
  start.folder = directory / "missing";
  EXPECT_FALSE(runTool(start, minutes(1)).succeeded);
}

TEST(RunTools, TakesOutputsOfManyBytes) {
  const auto results = runScripts({"head -c 300000 /dev/zero"}, 1, minutes(1));
  EXPECT_EQ(results.at(0).output.size(), 300000U);
}

TEST(RunTools, TellsOfAProgramThatCannotBeStarted) {
  std::vector<std::size_t> failed;
  runTools(
      2, 1, minutes(1), [](std::size_t) { return ToolStart{.arguments = {"/no/such/program"}}; },
      [&](std::size_t i, const ToolResult& result) {
        EXPECT_FALSE(result.succeeded);
        failed.push_back(i);
        return true;
      });
  EXPECT_THAT(failed, ElementsAre(0, 1));
}

TEST(RunTools, EndsWhatTakesTooLongWithAllThatItStarted) {
  const TempDir directory;
  const std::string script = "sleep 1000 & echo $! >" + (directory / "pid") + "; wait";
  const auto results = runScripts({script, "echo done"}, 1, std::chrono::seconds(2));
  EXPECT_EQ(results.at(0).ending, "out of time");
  EXPECT_FALSE(results.at(0).succeeded);
  EXPECT_TRUE(results.at(1).succeeded);
  // What has ended has no command line any more, even if nobody has asked for its status yet.
  std::string sleeper = "/proc/" + test::readFile(directory / "pid");
  sleeper.back() = '/';
  for (int i = 0; i < 1000 && !test::readFile(sleeper + "cmdline").empty(); ++i) {
    std::this_thread::sleep_for(milliseconds(10));
  }
  EXPECT_EQ(test::readFile(sleeper + "cmdline"), "");
}

TEST(RunTools, StopsWhenItIsTold) {
  std::vector<std::size_t> told;
  runTools(
      10, 2, minutes(1), [](std::size_t i) { return shellScript(i == 0 ? "sleep 1000" : "true"); },
      [&](std::size_t i, const ToolResult&) {
        told.push_back(i);
        return told.size() < 3;
      });
  EXPECT_THAT(told, ElementsAre(1, 2, 3));
}

}  // namespace
}  // namespace plenvorith
