#include "batch/worker/worker.h"

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "batch/local/worker_process.h"
#include "tests/support/temp_dir.h"
#include "tests/support/triangle_step.h"

namespace plenvorith {
namespace {

using test::kTriangleStep;
using testing::HasSubstr;

/// A worker in a process of its own, as a driver has it.
class WorkerTest : public testing::Test {
 protected:
  ~WorkerTest() override {
    (void)buryWorker(worker);
  }

  Job jobFor(const std::string& name) const {
    Job job;
    job.id = 5;
    job.input = dir / name;
    job.outFolder = dir / "work/out";
    job.temporaryFolder = dir / "work/tmp";
    job.outputName = name + ".stl";
    job.transcript = dir / "transcripts/" + name + ".txt";
    return job;
  }

  void send(const Job& job) const {
    ASSERT_TRUE(writeAll(worker.jobs.get(), lineFrom(job) + '\n'));
  }

  JobResult convert(const Job& job) {
    send(job);
    bool isAlive = true;
    std::vector<std::string> lines;
    while (isAlive && lines.empty()) {
      lines = receiveLines(worker, isAlive);
    }
    const auto result = lines.empty() ? std::nullopt : resultFrom(lines[0], {{5, ""}});
    EXPECT_TRUE(result.has_value());
    return result.value_or(JobResult());
  }

  /// Waits for its end; gives how that came.
  int end() {
    int status = -1;
    EXPECT_GT(waitpid(std::exchange(worker.process, 0), &status, 0), 0);
    return status;
  }

  test::TempDir dir;
  WorkerProcess worker = std::move(*startWorker());
};

TEST_F(WorkerTest, ConvertsFileAfterFile) {
  test::writeFile(dir / "a.stp", kTriangleStep);
  for (int round = 0; round < 3; ++round) {
    const JobResult result = convert(jobFor("a.stp"));
    EXPECT_TRUE(result.isConverted) << result.reason;
    EXPECT_EQ(result.id, 5);
    EXPECT_EQ(result.triangles, 1);
    EXPECT_EQ(result.exitStatus, 0);
    ASSERT_EQ(result.outputs.size(), 1U);
    EXPECT_EQ(result.outputs[0].path, "a.stp.stl");
    EXPECT_EQ(result.outputs[0].size, 134);
    EXPECT_EQ(test::readFile(dir / "work/out/a.stp.stl").size(), 134U);
    EXPECT_THAT(test::readFile(dir / "transcripts/a.stp.txt"), testing::EndsWith("Done\n"));
  }
  worker.jobs.close();
  EXPECT_EQ(end(), 0);
}

/// Ignores the signal that tells of the end of a child while the fixture behind it starts a worker.
struct IgnoresChildren {
  IgnoresChildren() {
    (void)signal(SIGCHLD, SIG_IGN);
  }
};

class WorkerOfCarelessParentTest : private IgnoresChildren, public WorkerTest {
 protected:
  WorkerOfCarelessParentTest() {
    (void)signal(SIGCHLD, SIG_DFL);
  }
};

TEST_F(WorkerOfCarelessParentTest, Converts) {
  test::writeFile(dir / "a.stp", kTriangleStep);
  EXPECT_TRUE(convert(jobFor("a.stp")).isConverted);
}

TEST_F(WorkerTest, LeavesTheNamesOfShapesWhereTheyAreAskedFor) {
  Job job = jobFor("lamp.step");
  job.input = std::string(PLENVORITH_SAMPLES) + "/assembly.step";
  job.settings.split = true;
  EXPECT_EQ(convert(job).outputs.size(), 4U);
  EXPECT_EQ(access((job.temporaryFolder + "/names.json").c_str(), F_OK), -1);
  job.names = true;
  EXPECT_EQ(convert(job).outputs.size(), 4U);
  EXPECT_THAT(test::readFile(job.temporaryFolder + "/names.json"),
              testing::StartsWith(R"([{"name":"","number":1,"path":["lamp","foot"]},)"));
}

TEST_F(WorkerTest, ListsThePartsOfASplitMesh) {
  Job job = jobFor("lamp.step");
  job.input = std::string(PLENVORITH_SAMPLES) + "/assembly.step";
  job.settings.split = true;
  job.settings.parts = true;
  const JobResult result = convert(job);
  ASSERT_EQ(result.outputs.size(), 5U);
  EXPECT_EQ(result.outputs[0].path, "lamp.step.stl.parts.json");
  const std::string list = test::readFile(job.outFolder + "/lamp.step.stl.parts.json");
  EXPECT_EQ(result.outputs[0].size, static_cast<std::int64_t>(list.size()));
  EXPECT_THAT(list, HasSubstr("\n{\"number\":4,\"path\":[\"lamp\",\"shade\"],\"name\":\"\","
                              "\"kind\":\"shell\",\"triangles\":"));
}

TEST_F(WorkerTest, OutlivesWhatEndsAConversion) {
  std::string broken = kTriangleStep;
  broken.replace(broken.find("(1.,0.,0.)"), 10, "(x.,0.,0.)");
  test::writeFile(dir / "broken.stp", broken);
  test::writeFile(dir / "a.stp", kTriangleStep);
  const JobResult result = convert(jobFor("broken.stp"));
  EXPECT_FALSE(result.isConverted);
  EXPECT_EQ(result.signal, SIGABRT);
  EXPECT_EQ(result.reason, "a malformed number");
  EXPECT_TRUE(convert(jobFor("a.stp")).isConverted);
}

TEST_F(WorkerTest, EndsAConversionAtItsTimeLimit) {
  ASSERT_EQ(mkfifo((dir / "pipe.stp").c_str(), 0600), 0);
  Job job = jobFor("pipe.stp");
  job.settings.timeLimit = std::chrono::seconds(1);
  const JobResult result = convert(job);
  EXPECT_EQ(result.reason, "time limit of 1 s");
  EXPECT_THAT(result.lastLine, HasSubstr("Analyzing"));
}

TEST_F(WorkerTest, RefusesWhatCannotBeConverted) {
  test::writeFile(dir / "empty.stp", "");
  EXPECT_EQ(convert(jobFor("empty.stp")).reason, "empty");
  EXPECT_EQ(convert(jobFor("missing.stp")).reason, "cannot be read: No such file or directory");
  test::writeFile(dir / "a.stp", kTriangleStep);
  Job job = jobFor("a.stp");
  job.outputName = std::string(256, 'a');
  EXPECT_EQ(convert(job).reason, "name too long");
}

// Of the copy that the converter makes of it, and of the output, at their longest and one longer.
TEST_F(WorkerTest, ConvertsFilesWhoseNamesAreAsLongAsNamesCanBe) {
  for (const std::size_t length : {245U, 246U, 251U}) {
    const std::string name = std::string(length - 4, 'a') + ".stp";
    test::writeFile(dir / name, kTriangleStep);
    const JobResult result = convert(jobFor(name));
    EXPECT_TRUE(result.isConverted) << length << ": " << result.reason;
    EXPECT_EQ(test::readFile(dir / ("work/out/" + name + ".stl")).size(), 134U) << length;
  }
  const std::string name = std::string(248, 'a') + ".stp";
  test::writeFile(dir / name, kTriangleStep);
  EXPECT_EQ(convert(jobFor(name)).reason, "name too long");
}

TEST_F(WorkerTest, NoticesAnInputThatChangesMeanwhile) {
  test::writeFile(dir / "a.stp", kTriangleStep);
  Job job = jobFor("a.stp");
  job.settings.program = test::writeScript(dir / "change", "cp \"$1\" \"$2\"; echo more >>\"$1\"");
  job.outputName = "a.stp";
  const JobResult result = convert(job);
  EXPECT_FALSE(result.isConverted);
  EXPECT_EQ(result.reason, "changed while it was converted");
}

TEST_F(WorkerTest, EndsWithItsConversionWhenNobodyReadsItsResults) {
  ASSERT_EQ(mkfifo((dir / "pipe.stp").c_str(), 0600), 0);
  send(jobFor("pipe.stp"));
  worker.results.close();
  EXPECT_EQ(end(), 0);
}

TEST_F(WorkerTest, EndsOnASignal) {
  ASSERT_EQ(mkfifo((dir / "pipe.stp").c_str(), 0600), 0);
  send(jobFor("pipe.stp"));
  kill(worker.process, SIGTERM);
  const int status = end();
  // Either it was listening already, or the signal came before.
  EXPECT_TRUE((WIFEXITED(status) && WEXITSTATUS(status) == 0) || WIFSIGNALED(status));
}

}  // namespace
}  // namespace plenvorith
