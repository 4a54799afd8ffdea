#include "batch/hosts/host_engine.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "batch/records/job.h"
#include "batch/system/folder.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::IsEmpty;

/// Two files, and a script in the place of GNU parallel.
class HostEngineTest : public testing::Test {
 protected:
  HostEngineTest() {
    context.places = placesIn(dir / "out");
    context.base = dir.path().string() + '/';
    for (const char* const name : {"a.stp", "b.stp"}) {
      files.push_back({test::writeFile(dir / name, name), 5});
    }
    engine.folder = dir / "round";
    wish.folder = engine.folder;
    EXPECT_TRUE(makeFolders(engine.folder));
  }

  /// Starts the script, which runs in the folder of the round, with these chunks.
  std::string start(const std::string& script,
                    const std::vector<std::vector<std::size_t>>& chunks) {
    const std::string path = test::writeScript(dir / "parallel", script);
    std::string problem = startEngine(engine, path, wish, {{":", 1}}, chunks);
    while (problem.empty() && hasUnsent(engine)) {
      problem = sendChunk(engine);
    }
    return problem;
  }

  std::vector<Finished> collectAll() {
    std::vector<Finished> all;
    for (bool isAlive = true; isAlive;) {
      std::vector<Finished> some = collectFromHosts(engine, isAlive);
      std::move(some.begin(), some.end(), std::back_inserter(all));
    }
    endTool(engine.parallel);
    return all;
  }

  static std::string lineOf(std::int64_t file, const std::string& reason) {
    JobResult result;
    result.id = file;
    result.reason = reason;
    return lineFrom(result) + '\n';
  }

  const test::TempDir dir;
  RunContext context;
  ConversionSettings settings;
  std::vector<InputFile> files;
  HostWish wish;
  HostEngine engine{context, settings, files, {}, false, {}, {}, {}, {}, {}, 0, {}, {}, {}};
};

TEST_F(HostEngineTest, GivesTheResultsThatTheHostsPrint) {
  test::writeFile(engine.folder + "/answers", lineOf(1, "first") + lineOf(0, "second"));
  ASSERT_EQ(start("cat answers", {{1}, {0}}), "");
  const std::vector<Finished> all = collectAll();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].input, dir / "b.stp");
  EXPECT_EQ(all[0].outFolder, engine.folder + "/made/1");
  EXPECT_EQ(all[0].result.reason, "first");
  EXPECT_EQ(all[1].input, dir / "a.stp");
  EXPECT_EQ(all[1].result.reason, "second");
}

TEST_F(HostEngineTest, TellsEachChunkItsJobs) {
  ASSERT_EQ(start("cat >given", {{1}, {0}}), "");
  EXPECT_THAT(collectAll(), IsEmpty());
  EXPECT_EQ(test::readFile(engine.folder + "/given"), "0\n1\n");
  const std::string line = test::readFile(engine.folder + "/0.jobs");
  const std::optional<Job> job = jobFrom(line.substr(0, line.find('\n')));
  ASSERT_TRUE(job);
  EXPECT_EQ(job->id, 1);
  EXPECT_EQ(job->input, dir / "b.stp");
  EXPECT_EQ(job->outFolder, engine.folder + "/made/1");
  EXPECT_EQ(job->outputName, "b.stp.stl");
  EXPECT_EQ(job->transcript, engine.folder + "/transcripts/1");
}

TEST_F(HostEngineTest, PassesOverWhatIsNoResultOfThisRun) {
  test::writeFile(engine.folder + "/answers",
                  "noise\n\n" + lineOf(99, "") + lineOf(-1, "") + lineOf(0, "right"));
  ASSERT_EQ(start("cat answers; printf cut", {{0}}), "");
  const std::vector<Finished> all = collectAll();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].result.reason, "right");
}

TEST_F(HostEngineTest, SendsInputsAndBringsOutputsBack) {
  engine.transfer = true;
  test::writeFile(engine.folder + "/answers", lineOf(0, ""));
  // What a host does, with a copy of the input as the output.
  ASSERT_EQ(
      start("cat >given; tar -xf 0.tar && cd 0 && mkdir made/0 && cp in/0/a.stp made/0/a.stl &&\n"
            "echo said >transcripts/0 && cp ../answers results && cd .. &&\n"
            "tar -cf 0.out.tar 0 && rm -r 0 && echo 0.out.tar\n",
            {{0}}),
      "");
  const std::vector<Finished> all = collectAll();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].outFolder, engine.folder + "/0/made/0");
  EXPECT_EQ(test::readFile(all[0].outFolder + "/a.stl"), "a.stp");
  EXPECT_EQ(test::readFile(all[0].transcript), "said\n");
  EXPECT_FALSE(std::filesystem::exists(engine.folder + "/0.tar"));
  EXPECT_FALSE(std::filesystem::exists(engine.folder + "/0.out.tar"));
}

TEST_F(HostEngineTest, BeginsBeforeAllIsPacked) {
  engine.transfer = true;
  const std::string path = test::writeScript(
      dir / "parallel", "read -r first && [ ! -e 1.tar ] && mv $first.tar begun\necho\ncat >rest");
  ASSERT_EQ(startEngine(engine, path, wish, {{":", 1}}, {{0}, {1}}), "");
  ASSERT_EQ(sendChunk(engine), "");
  bool isAlive = false;
  EXPECT_THAT(collectFromHosts(engine, isAlive), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(engine.folder + "/begun"));
  EXPECT_TRUE(hasUnsent(engine));
  ASSERT_EQ(sendChunk(engine), "");
  EXPECT_FALSE(hasUnsent(engine));
  EXPECT_THAT(collectAll(), IsEmpty());
  EXPECT_EQ(test::readFile(engine.folder + "/rest"), "1\n");
}

TEST_F(HostEngineTest, TakesNothingFromWhatHasComeInHalf) {
  engine.transfer = true;
  ASSERT_EQ(
      start("cat >given; head -c 100 0.tar >0.out.tar; echo 0.out.tar; echo 7.out.tar", {{0}}), "");
  EXPECT_THAT(collectAll(), IsEmpty());
}

TEST_F(HostEngineTest, EndsWhatIsUnderWayAndKeepsWhatHasCome) {
  test::writeFile(engine.folder + "/answers", lineOf(1, "in time"));
  ASSERT_EQ(start("cat answers; exec sleep 1000", {{0, 1}}), "");
  const std::vector<Finished> all = stopEngine(engine);
  // It may be ended before it has printed anything.
  for (const Finished& finished : all) {
    EXPECT_EQ(finished.result.reason, "in time");
  }
  EXPECT_EQ(engine.parallel.process, 0);
}

TEST_F(HostEngineTest, SaysWhatCannotBeWritten) {
  engine.folder = dir / "absent";
  EXPECT_EQ(start(":", {{0}}), (dir / "absent") + " cannot be written");
  EXPECT_THAT(stopEngine(engine), IsEmpty());
}

TEST_F(HostEngineTest, WaitsForTheSlowestFileOrWithTransferForTheSlowestChunk) {
  using std::chrono::seconds;
  files.push_back({dir / "c.stp", 40'000'000});
  settings.timeLimit = seconds(5);
  engine.division = {{0, 1}, {2}};
  EXPECT_EQ(patienceForHosts(engine), seconds(5 + 60 + 10));
  engine.transfer = true;
  EXPECT_EQ(patienceForHosts(engine), seconds(2 * (5 + 60)));
  settings.timeLimit = seconds(0);
  EXPECT_EQ(patienceForHosts(engine), std::nullopt);
}

TEST(EngineOptions, NameEachHostWithItsJobs) {
  const std::vector<std::string> shared = engineOptions({{":", 2}, {"ssh -F c beta", 8}}, false);
  EXPECT_THAT(shared,
              testing::IsSupersetOf({"--sshlogin", "2/:", "8/ssh -F c beta", "--line-buffer"}));
  EXPECT_THAT(
      engineOptions({{":", 2}}, true),
      testing::IsSupersetOf({"--transferfile", "{}.tar", "--results", "{}.out.tar", "--files"}));
}

}  // namespace
}  // namespace plenvorith
