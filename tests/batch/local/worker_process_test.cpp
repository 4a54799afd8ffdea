#include "batch/local/worker_process.h"

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/records/job.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

std::optional<WorkerProcess> started() {
  auto worker = startWorker();
  EXPECT_TRUE(worker.has_value());
  return worker;
}

TEST(StartWorker, GivesAWorkerThatConverts) {
  const test::TempDir dir;
  auto worker = started();
  Job job;
  job.id = 3;
  job.input = test::writeFile(dir / "a.stp", test::kTriangleStep);
  job.outFolder = dir / "work/out";
  job.temporaryFolder = dir / "work/tmp";
  job.outputName = "a.stl";
  job.transcript = dir / "a.txt";
  ASSERT_TRUE(writeAll(worker->jobs.get(), lineFrom(job) + '\n'));
  bool isAlive = true;
  std::vector<std::string> lines;
  while (isAlive && lines.empty()) {
    lines = receiveLines(*worker, isAlive);
  }
  ASSERT_EQ(lines.size(), 1U);
  const auto result = resultFrom(lines[0], {{3, "a.stl"}});
  ASSERT_TRUE(result.has_value());
  EXPECT_TRUE(result->isConverted) << result->reason;
  EXPECT_EQ(result->id, 3);
  EXPECT_EQ(test::readFile(dir / "work/out/a.stl").size(), 134U);
  EXPECT_EQ(buryWorker(*worker), 0);
  EXPECT_EQ(worker->process, 0);
}

TEST(BuryWorker, TellsTheSignalThatEndedIt) {
  auto worker = started();
  kill(worker->process, SIGKILL);
  EXPECT_EQ(buryWorker(*worker), SIGKILL);
  EXPECT_FALSE(worker->jobs.isOpen());
  EXPECT_FALSE(worker->results.isOpen());
  EXPECT_EQ(buryWorker(*worker), 0);
}

TEST(StopWorkers, EndsThemWithWhatIsUnderWay) {
  const test::TempDir dir;
  std::vector<WorkerProcess> workers;
  workers.reserve(2);
  for (int i = 0; i < 2; ++i) {
    workers.push_back(std::move(*started()));
  }
  // The first waits for jobs, the second for the writer of its input.
  ASSERT_EQ(mkfifo((dir / "pipe.stp").c_str(), 0600), 0);
  Job job;
  job.input = dir / "pipe.stp";
  job.outFolder = dir / "work/out";
  job.temporaryFolder = dir / "work/tmp";
  job.outputName = "a.stl";
  job.transcript = dir / "a.txt";
  ASSERT_TRUE(writeAll(workers[1].jobs.get(), lineFrom(job) + '\n'));
  const std::vector<pid_t> processes = {workers[0].process, workers[1].process};
  stopWorkers(workers);
  for (const pid_t process : processes) {
    EXPECT_EQ(kill(process, 0), -1);
  }
}

}  // namespace
}  // namespace plenvorith
