#include "batch/state/merge.h"

#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include "batch/system/descriptor.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::TempDir;
using testing::ElementsAre;
using testing::IsEmpty;

FileRecord record(const std::string& name, std::int64_t run, FileStatus status) {
  FileRecord file;
  file.path = "/in/" + name;
  file.name = name;
  file.run = run;
  file.status = status;
  file.outputs = {{name + ".stl", 84}};
  return file;
}

/// A shard with one run and these files.
void makeShard(const Places& places, int number, const std::vector<FileRecord>& files) {
  const Places own = placesOfShard(places, {number, 2});
  std::filesystem::create_directories(std::filesystem::path(own.database).parent_path());
  const State state = test::openedState(own.database, StateUse::Alone);
  RunRecord run;
  run.host = "host " + std::to_string(number);
  EXPECT_EQ(putRun(*state, run), 1);
  for (const FileRecord& file : files) {
    EXPECT_TRUE(putFile(*state, file));
  }
}

TEST(MergeShards, TakesInFilesAndRuns) {
  const TempDir directory;
  const Places places = placesIn(directory.path());
  makeShard(places, 1, {record("a.stp", 1, FileStatus::Converted)});
  makeShard(places, 2,
            {record("b.stp", 1, FileStatus::Failed), record("old.stp", 0, FileStatus::Converted)});
  const State state = test::openedState(places.database);
  RunRecord before;
  before.host = "before";
  EXPECT_EQ(putRun(*state, before), 1);
  EXPECT_TRUE(putFile(*state, record("a.stp", 1, FileStatus::Failed)));

  const Merged merged = mergeShards(*state, places);
  EXPECT_EQ(merged.shards, 2);
  EXPECT_EQ(merged.files, 2);
  EXPECT_THAT(merged.problems, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(shardsFolder(places)));

  const auto a = findFile(*state, "/in/a.stp");
  const auto b = findFile(*state, "/in/b.stp");
  ASSERT_TRUE(a && b);
  EXPECT_EQ(a->status, FileStatus::Converted);
  EXPECT_EQ(b->status, FileStatus::Failed);
  EXPECT_FALSE(findFile(*state, "/in/old.stp"));  // the shard only knew it from here
  const std::vector<RunRecord> runs = allRuns(*state);
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[static_cast<std::size_t>(a->run - 1)].host, "host 1");
  EXPECT_EQ(runs[static_cast<std::size_t>(b->run - 1)].host, "host 2");
}

TEST(MergeShards, LeavesAShardThatIsAtWork) {
  const TempDir directory;
  const Places places = placesIn(directory.path());
  makeShard(places, 1, {record("a.stp", 1, FileStatus::Converted)});
  makeShard(places, 2, {record("b.stp", 1, FileStatus::Converted)});
  const Places busy = placesOfShard(places, {2, 2});
  const Descriptor lock(open(busy.lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  const State state = test::openedState(places.database);
  const Merged merged = mergeShards(*state, places);
  EXPECT_EQ(merged.shards, 1);
  EXPECT_THAT(merged.problems,
              ElementsAre("this shard is at work: " + shardsFolder(places) + "/2-of-2"));
  EXPECT_TRUE(std::filesystem::exists(busy.database));
  EXPECT_FALSE(findFile(*state, "/in/b.stp"));
}

TEST(MergeShards, LeavesAStateThatIsNone) {
  const TempDir directory;
  const Places places = placesIn(directory.path());
  const Places own = placesOfShard(places, {1, 1});
  std::filesystem::create_directories(std::filesystem::path(own.database).parent_path());
  test::writeFile(own.database, "no database, but more than one page of text would be one");
  const State state = test::openedState(places.database);
  const Merged merged = mergeShards(*state, places);
  EXPECT_EQ(merged.problems.size(), 1U);
  EXPECT_TRUE(std::filesystem::exists(own.database));
}

TEST(ImportRecords, GivesAShardWhatIsKnownOfItsFiles) {
  const TempDir directory;
  const std::string database = directory / "state 100%?#.db";
  {
    const State state = test::openedState(database);
    EXPECT_TRUE(putFile(*state, record("a.stp", 1, FileStatus::Converted)));
    EXPECT_TRUE(putFile(*state, record("b.stp", 1, FileStatus::Converted)));
  }
  const State shard = test::openedState(directory / "shard.db", StateUse::Alone);
  EXPECT_TRUE(putFile(*shard, record("b.stp", 4, FileStatus::Failed)));
  std::string problem;
  EXPECT_TRUE(importRecords(database, *shard,
                            {{"/in/a.stp", 1}, {"/in/b.stp", 1}, {"/in/new.stp", 1}}, problem))
      << problem;
  EXPECT_EQ(findFile(*shard, "/in/a.stp")->run, 0);
  EXPECT_EQ(findFile(*shard, "/in/b.stp")->run, 4);
  EXPECT_FALSE(findFile(*shard, "/in/new.stp"));
  EXPECT_TRUE(importRecords(directory / "missing", *shard, {}, problem));
}

TEST(ImportRecords, WantsAStateWithoutALog) {
  const TempDir directory;
  const State state = test::openedState(directory / "state.db");
  EXPECT_TRUE(putFile(*state, record("a.stp", 1, FileStatus::Converted)));
  const State shard = test::openedState(directory / "shard.db", StateUse::Alone);
  std::string problem;
  EXPECT_FALSE(importRecords(directory / "state.db", *shard, {{"/in/a.stp", 1}}, problem));
  EXPECT_EQ(problem, (directory / "state.db") +
                         ": written by a run that was cut short; --merge puts it right");
}

}  // namespace
}  // namespace plenvorith
