#include "batch/local/pool.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/system/process.h"
#include "tests/support/scoped_signals.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// A pool of this machine and three inputs.
class PoolTest : public testing::Test {
 protected:
  PoolTest() {
    std::signal(SIGPIPE, SIG_IGN);  // as whoever has a pool does
    pool.places = placesIn(dir / "out");
    pool.base = dir.path().string() + '/';
    for (const char* const name : {"a.stp", "b.stp", "c.stp"}) {
      files.push_back({test::writeFile(dir / name, test::kTriangleStep), 1});
    }
  }
  ~PoolTest() override {
    stopPool(pool);
  }

  bool give(std::size_t file, int most) {
    return giveJob(pool, files[file], file, most);
  }

  /// Waits until a worker has a result or has ended.
  PoolEvents collect(std::size_t worker) {
    PoolEvents events;
    while (events.finished.empty() && events.lost.empty()) {
      events = collectResults(pool, {worker}, files);
    }
    return events;
  }

  /// Has a script run in the place of the converter.
  void takeScript(const std::string& body) {
    pool.settings.program = test::writeScript(dir / "script", body);
  }

  const test::ScopedSignals before;
  test::TempDir dir;
  std::vector<InputFile> files;
  WorkerPool pool;
};

TEST_F(PoolTest, StartsWorkersUntilThereAreEnough) {
  EXPECT_TRUE(hasIdle(pool, 2));
  EXPECT_TRUE(give(0, 2));
  EXPECT_TRUE(hasIdle(pool, 2));
  EXPECT_TRUE(give(1, 2));
  EXPECT_FALSE(hasIdle(pool, 2));
  EXPECT_FALSE(give(2, 2));
  EXPECT_THAT(pool.workers, SizeIs(2));
  EXPECT_NE(pool.workers[0].folder, pool.workers[1].folder);
  EXPECT_EQ(countBusy(pool), 2);
}

TEST_F(PoolTest, GivesResultsWithTheirFolders) {
  ASSERT_TRUE(give(1, 1));
  const PoolEvents events = collect(0);
  ASSERT_THAT(events.finished, SizeIs(1));
  const Finished& finished = events.finished[0];
  EXPECT_EQ(finished.input, files[1].path);
  EXPECT_EQ(finished.result.id, 1);
  EXPECT_TRUE(finished.result.isConverted) << finished.result.reason;
  EXPECT_EQ(test::readFile(finished.outFolder + "/b.stp.stl").size(), 134U);
  EXPECT_EQ(finished.outputName, "b.stp.stl");
  EXPECT_THAT(test::readFile(finished.transcript), testing::EndsWith("Done\n"));
}

TEST_F(PoolTest, UsesAFolderAgainOnlyWhenItsOutputsAreTaken) {
  ASSERT_TRUE(give(0, 1));
  const PoolEvents first = collect(0);
  ASSERT_THAT(first.finished, SizeIs(1));
  EXPECT_EQ(countBusy(pool), 0);
  ASSERT_TRUE(give(1, 1));
  const PoolEvents second = collect(0);
  ASSERT_THAT(second.finished, SizeIs(1));
  EXPECT_NE(second.finished[0].outFolder, first.finished[0].outFolder);
  EXPECT_EQ(test::readFile(first.finished[0].outFolder + "/a.stp.stl").size(), 134U);
  release(pool, first.finished[0]);
  ASSERT_TRUE(give(2, 1));
  const PoolEvents third = collect(0);
  ASSERT_THAT(third.finished, SizeIs(1));
  EXPECT_EQ(third.finished[0].outFolder, first.finished[0].outFolder);
  EXPECT_THAT(pool.workers, SizeIs(1));
}

TEST_F(PoolTest, GivesBackTheFileOfAWorkerThatEnds) {
  takeScript("kill -KILL $PPID");
  ASSERT_TRUE(give(2, 1));
  const PoolEvents events = collect(0);
  EXPECT_THAT(events.finished, IsEmpty());
  ASSERT_THAT(events.lost, SizeIs(1));
  EXPECT_EQ(events.lost[0].file, 2U);
  EXPECT_EQ(events.lost[0].signal, SIGKILL);
  EXPECT_EQ(countBusy(pool), 0);

  const std::string earlier = pool.workers[0].folder;
  pool.settings.program.clear();
  ASSERT_TRUE(give(2, 1));
  EXPECT_THAT(pool.workers, SizeIs(1));
  EXPECT_NE(pool.workers[0].folder, earlier);
  EXPECT_THAT(collect(0).finished, SizeIs(1));
}

TEST_F(PoolTest, NoticesAnIdleWorkerThatEnds) {
  ASSERT_TRUE(give(0, 1));
  EXPECT_THAT(collect(0).finished, SizeIs(1));
  kill(pool.workers[0].process.process, SIGKILL);
  while (pool.workers[0].process.process != 0) {
    EXPECT_THAT(collectResults(pool, {0}, files).lost, IsEmpty());
  }
  ASSERT_TRUE(give(1, 1));
  EXPECT_THAT(collect(0).finished, SizeIs(1));
}

TEST_F(PoolTest, EndsAWorkerThatDoesNotAnswer) {
  takeScript("kill -STOP $PPID; touch '" + (dir / "begun") + "'; exec sleep 1000");
  pool.settings.timeLimit = std::chrono::seconds(7);
  ASSERT_TRUE(give(1, 1));
  while (access((dir / "begun").c_str(), F_OK) != 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const auto now = std::chrono::steady_clock::now();
  EXPECT_THAT(endSilent(pool, now + pool.settings.timeLimit), IsEmpty());
  const std::vector<LostFile> lost = endSilent(pool, now + std::chrono::seconds(7 + 61));
  ASSERT_THAT(lost, SizeIs(1));
  EXPECT_EQ(lost[0].file, 1U);
  EXPECT_TRUE(lost[0].isSilent);
  EXPECT_EQ(countBusy(pool), 0);
  EXPECT_THAT(endSilent(pool, now + std::chrono::hours(1)), IsEmpty());

  pool.settings.program.clear();
  pool.settings.timeLimit = std::chrono::seconds(0);
  ASSERT_TRUE(give(1, 1));
  EXPECT_THAT(endSilent(pool, now + std::chrono::hours(1000)), IsEmpty());
  EXPECT_THAT(collect(0).finished, SizeIs(1));
}

TEST_F(PoolTest, WaitsForNoWorkerThatSendsSomethingElse) {
  for (const bool isBusy : {true, false}) {
    takeScript("sleep 1000");
    ASSERT_TRUE(give(2, 1));
    if (!isBusy) {
      pool.workers[0].file.reset();
    }
    Pipe pipe = std::move(*makePipe());
    pool.workers[0].process.results = std::move(pipe.read);
    ASSERT_TRUE(writeAll(pipe.write.get(), "welcome\n"));
    const PoolEvents events = collectResults(pool, {0}, files);
    EXPECT_THAT(events.finished, IsEmpty());
    EXPECT_THAT(events.lost, SizeIs(isBusy ? 1 : 0));
    EXPECT_EQ(countBusy(pool), 0);
    EXPECT_EQ(pool.workers[0].process.process, 0);
  }
}

TEST_F(PoolTest, EndsAllThatIsUnderWay) {
  takeScript("echo $$ >>\"" + (dir / "begun") + "\"; sleep 1000");
  ASSERT_TRUE(give(0, 2));
  ASSERT_TRUE(give(1, 2));
  const pid_t worker = pool.workers[0].process.process;
  while (std::ranges::count(test::readFile(dir / "begun"), '\n') < 2) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  stopPool(pool);
  EXPECT_EQ(kill(worker, 0), -1);
  EXPECT_THAT(pool.workers, IsEmpty());
  EXPECT_EQ(countBusy(pool), 0);
  EXPECT_EQ(kill(std::stoi(test::readFile(dir / "begun")), 0), -1);
}

}  // namespace
}  // namespace plenvorith
