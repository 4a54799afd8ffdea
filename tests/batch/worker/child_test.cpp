#include "batch/worker/child.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/system/process.h"
#include "batch/system/signals.h"
#include "tests/support/scoped_signals.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A worker's surroundings: folders, a transcript, signals and somebody who reads the results.
class ChildTest : public testing::Test {
 protected:
  ChildTest() {
    std::filesystem::create_directories(dir / "work");
    std::filesystem::create_directories(dir / "tmp");
    transcriptFile =
        Descriptor(open((dir / "transcript").c_str(), O_RDWR | O_CREAT | O_APPEND, 0600));
    child.workFolder = dir / "work";
    child.temporaryFolder = dir / "tmp";
    child.transcript = transcriptFile.get();
    child.arguments = {"first", "second"};
  }

  /// Has a script run in the place of the converter.
  void takeScript(const std::string& body) {
    child.settings.program = test::writeScript(dir / "script", body);
  }

  ChildEnd run() {
    return runChild(child, {listener.get(), results.write.get()});
  }

  std::string transcript() const {
    return test::readFile(dir / "transcript");
  }

  const test::ScopedSignals before;
  const Descriptor listener = listenToSignals({SIGCHLD, SIGHUP, SIGINT, SIGTERM});
  test::TempDir dir;
  Pipe results = std::move(*makePipe());
  Descriptor transcriptFile;
  ChildSettings child;
};

TEST_F(ChildTest, ConvertsWithTheConverterThatIsBuiltIn) {
  child.arguments = {test::writeFile(dir / "a.stp", test::kTriangleStep), "a.stl", "0.1"};
  const ChildEnd end = run();
  EXPECT_EQ(end.exitStatus, 0);
  EXPECT_FALSE(end.signal.has_value());
  EXPECT_EQ(test::readFile(dir / "work/a.stl").size(), 134U);
  EXPECT_THAT(transcript(), StartsWith("Reading: " + (dir / "a.stp") + "\n"));
  EXPECT_THAT(transcript(), EndsWith("Saved: a.stl\nDone\n"));
}

TEST_F(ChildTest, PreparesTheInputFirst) {
  child.arguments = {test::writeFile(dir / "a.stp", test::kTriangleStep), "a.stl", "0.1"};
  child.preparedPath = dir / "tmp/prepared.stp";
  EXPECT_EQ(run().exitStatus, 0);
  EXPECT_THAT(transcript(), HasSubstr("Reading: " + child.preparedPath + "\n"));
  EXPECT_EQ(test::readFile(dir / "work/a.stl").size(), 134U);
}

TEST_F(ChildTest, EndsWhereThereIsNothingToPrepare) {
  child.arguments = {test::writeFile(dir / "a.stp", "no STEP"), "a.stl", "0.1"};
  child.preparedPath = dir / "tmp/prepared.stp";
  EXPECT_NE(run().exitStatus, 0);
  EXPECT_THAT(transcript(), testing::Not(HasSubstr("Reading: ")));
}

TEST_F(ChildTest, GivesAProgramWhatAShellWouldGiveIt) {
  takeScript(R"sh(printf '%s|' "$0" "$@" "$PWD" "$TMPDIR" "$(cat | wc -c)"
ls /proc/self/fd | wc -l
grep '^SigBlk' /proc/self/status
ulimit -c; echo error >&2)sh");
  EXPECT_EQ(run().exitStatus, 0);
  // The three streams, and the folder that is listed.
  EXPECT_EQ(transcript(), child.settings.program + "|first|second|" + (dir / "work") + "|" +
                              (dir / "tmp") + "|0|4\nSigBlk:\t0000000000000000\n0\nerror\n");
}

TEST_F(ChildTest, TellsTheExitStatus) {
  takeScript("exit 7");
  const ChildEnd end = run();
  EXPECT_EQ(end.exitStatus, 7);
  EXPECT_FALSE(end.timedOut);
  EXPECT_FALSE(end.isStopped);
  EXPECT_GT(end.seconds, 0);
  EXPECT_GT(end.peakMemory, 0);
  EXPECT_LT(end.leastSpace, std::numeric_limits<std::int64_t>::max());
}

TEST_F(ChildTest, TellsTheSignal) {
  takeScript("kill -SEGV $$");
  const ChildEnd end = run();
  EXPECT_FALSE(end.exitStatus.has_value());
  EXPECT_EQ(end.signal, SIGSEGV);
}

TEST_F(ChildTest, TellsThatAProgramCannotBeStarted) {
  child.settings.program = dir / "missing";
  EXPECT_EQ(run().exitStatus, 127);
  EXPECT_EQ(transcript(), "plenvorith-batch: cannot start " + (dir / "missing") + "\n");
}

TEST_F(ChildTest, TellsThatTheWorkFolderIsMissing) {
  child.workFolder = dir / "missing";
  EXPECT_EQ(run().exitStatus, 127);
  EXPECT_EQ(transcript(), "plenvorith-batch: cannot set up the process\n");
}

TEST_F(ChildTest, LimitsTheMemory) {
  takeScript("ulimit -v");
  child.settings.memoryLimit = std::int64_t{512} << 20;
  EXPECT_EQ(run().exitStatus, 0);
  EXPECT_EQ(transcript(), "524288\n");
}

TEST_F(ChildTest, EndsItAtTheTimeLimit) {
  takeScript("echo begun; sleep 1000");
  child.settings.timeLimit = std::chrono::seconds(1);
  const ChildEnd end = run();
  EXPECT_TRUE(end.timedOut);
  EXPECT_FALSE(end.isStopped);
  EXPECT_EQ(end.signal, SIGTERM);
  EXPECT_EQ(transcript(), "begun\n");
}

TEST_F(ChildTest, KillsWhatMindsNoRequest) {
  takeScript("trap '' TERM; while :; do sleep 1; done");
  child.settings.timeLimit = std::chrono::seconds(1);
  const ChildEnd end = run();
  EXPECT_TRUE(end.timedOut);
  EXPECT_EQ(end.signal, SIGKILL);
}

TEST_F(ChildTest, EndsItWhenASignalAsksTheWorkerToEnd) {
  takeScript("kill -TERM $PPID; sleep 1000");
  const ChildEnd end = run();
  EXPECT_TRUE(end.isStopped);
  EXPECT_FALSE(end.timedOut);
  EXPECT_EQ(end.signal, SIGTERM);
}

TEST_F(ChildTest, EndsItWhenNobodyReadsResultsAnyMore) {
  takeScript("sleep 1000");
  results.read.close();
  const ChildEnd end = run();
  EXPECT_TRUE(end.isStopped);
  EXPECT_EQ(end.signal, SIGTERM);
}

/// Whether a process is there and has not ended.
bool isRunning(pid_t process) {
  const std::string status = test::readFile("/proc/" + std::to_string(process) + "/status");
  return !status.empty() && status.find("\nState:\tZ") == std::string::npos;
}

TEST_F(ChildTest, LeavesNothingRunningThatItStarted) {
  takeScript("sleep 1000 >/dev/null 2>&1 & echo $!");
  EXPECT_EQ(run().exitStatus, 0);
  const pid_t left = std::stoi(transcript());
  // The system delivers the signal when it likes to.
  for (int i = 0; i < 1000 && isRunning(left); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_FALSE(isRunning(left));
}

TEST(FreeSpace, IsLargeWhereItIsNotKnown) {
  const test::TempDir folder;
  EXPECT_GT(freeSpace(folder.path()), 0);
  EXPECT_EQ(freeSpace(folder / "missing"), std::numeric_limits<std::int64_t>::max());
}

TEST_F(ChildTest, DoubtsTheMeshOfAFileThatIsNotPrepared) {
  std::string strip = test::kTriangleStep;
  strip.replace(strip.find("(1,2,3)"), 7, "(1,2,3,1)");
  child.arguments = {test::writeFile(dir / "a.stp", strip), "a.stl", "0.1"};
  const ChildEnd end = run();
  EXPECT_EQ(end.exitStatus, 0);
  EXPECT_EQ(end.doubt, "preparing would change the mesh (strips): try without --as-is");
  EXPECT_GT(end.seconds, 0.0);
  EXPECT_GT(end.peakMemory, 0);
  EXPECT_THAT(transcript(), EndsWith("Done\n"));
  child.settings.prepare = true;
  child.preparedPath = dir / "tmp/prepared.stp";
  EXPECT_EQ(run().doubt, "");
}

}  // namespace
}  // namespace plenvorith
