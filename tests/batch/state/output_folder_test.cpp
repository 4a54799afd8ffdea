#include "batch/state/output_folder.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "batch/state/shard.h"
#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::HasSubstr;

/// Runs that want the same output folder.
class OutputFolderTest : public testing::Test {
 protected:
  Options optionsOf(std::optional<Shard> shard) {
    Options options;
    options.output = dir / "out";
    options.shard = shard;
    return options;
  }

  RunContext contextOf(const Options& options) {
    RunContext context;
    context.places = placesIn(options.output);
    if (options.shard) {
      context.places = placesOfShard(context.places, *options.shard);
    }
    context.base = "/in/";
    context.settings = "settings";
    return context;
  }

  /// What is in the way of a run, which keeps its locks.
  std::string take(const Options& options) {
    RunContext context = contextOf(options);
    std::string problem = takeOutputFolder(options, context, owned.emplace_back());
    run = context.places.run;
    return problem;
  }

  std::string join(Options options, StateHandle* state = nullptr) {
    options.dryRun = state == nullptr;
    files = {{"/in/a.stp", 100}, {"/in/b.stp", 100}};
    return becomeShard(options, contextOf(options), state, files);
  }

  /// A division of the folder in two that a run has proposed.
  void divide() {
    const Options options = optionsOf(Shard{1, 2});
    ASSERT_EQ(take(options), "");
    const State state = test::openedState(contextOf(options).places.database);
    ASSERT_EQ(join(options, state.get()), "");
  }

  const test::TempDir dir;
  std::vector<OwnedFolder> owned;
  std::string run;  ///< the folder that was given out last
  std::vector<InputFile> files;
};

TEST_F(OutputFolderTest, BelongsToOneRun) {
  EXPECT_EQ(take(optionsOf({})), "");
  EXPECT_EQ(take(optionsOf({})), "another run is writing to " + dir / "out");
  EXPECT_EQ(take(optionsOf(Shard{1, 2})),
            "another run is writing to " + (dir / "out") + ", or to this shard");
  owned.clear();
  EXPECT_EQ(take(optionsOf({})), "");
}

TEST_F(OutputFolderTest, IsSharedByShardsButNotByTwoOfTheSame) {
  EXPECT_EQ(take(optionsOf(Shard{1, 2})), "");
  EXPECT_EQ(take(optionsOf(Shard{2, 2})), "");
  EXPECT_THAT(take(optionsOf(Shard{1, 2})), HasSubstr("or to this shard"));
  EXPECT_THAT(take(optionsOf({})), HasSubstr("another run is writing to"));
}

TEST_F(OutputFolderTest, LosesWhatAKilledRunLeftUnderWay) {
  const std::string below = contextOf(optionsOf({})).places.run;
  std::filesystem::create_directories(below + "/0123456789abcdef/1");
  EXPECT_EQ(take(optionsOf({})), "");
  EXPECT_EQ(namesInFolder(below), std::vector{run.substr(below.size() + 1)});
  EXPECT_TRUE(std::filesystem::is_empty(run));
  owned.clear();
  EXPECT_FALSE(std::filesystem::exists(below));
}

TEST_F(OutputFolderTest, GivesNoTwoRunsTheSameFolder) {
  EXPECT_EQ(take(optionsOf({})), "");
  const std::string first = run;
  owned.clear();
  EXPECT_EQ(take(optionsOf({})), "");
  EXPECT_NE(run, first);
}

TEST_F(OutputFolderTest, IsNotTakenWhereNothingCanBeWorkedIn) {
  ASSERT_TRUE(makeFolders(contextOf(optionsOf({})).places.state));
  test::writeFile(contextOf(optionsOf({})).places.state + "/run", "");
  EXPECT_EQ(take(optionsOf({})),
            "no work folder below " + contextOf(optionsOf({})).places.run + ": Not a directory");
}

TEST_F(OutputFolderTest, CannotBeAFile) {
  test::writeFile(dir / "out", "");
  EXPECT_EQ(take(optionsOf({})), (dir / "out") + "/.plenvorith-batch: Not a directory");
}

TEST_F(OutputFolderTest, IsKeptFromWholeRunsUntilItsShardsAreMerged) {
  divide();
  owned.clear();
  EXPECT_EQ(take(optionsOf({})),
            "there are shards in " + (dir / "out") + " that --merge has not taken in");
  owned.clear();
  Options merge = optionsOf({});
  merge.merge = true;
  EXPECT_EQ(take(merge), "");
}

TEST_F(OutputFolderTest, IsKeptFromShardsOfAnotherDivision) {
  divide();
  const std::string strange =
      "the shards in " + (dir / "out") + " are others (2, settings base=/in/): --merge ends them";
  EXPECT_EQ(take(optionsOf(Shard{1, 3})), strange);
  EXPECT_EQ(join(optionsOf(Shard{1, 3})), strange);
  EXPECT_FALSE(
      std::filesystem::exists(contextOf(optionsOf(Shard{1, 3})).places.state + "/shards/1-of-3"));
}

TEST_F(OutputFolderTest, GivesEachShardItsFiles) {
  EXPECT_EQ(join(optionsOf(Shard{1, 2})), "");
  const std::vector<InputFile> first = files;
  EXPECT_EQ(join(optionsOf(Shard{2, 2})), "");
  ASSERT_EQ(first.size(), 1U);
  ASSERT_EQ(files.size(), 1U);
  EXPECT_NE(first[0].path, files[0].path);
  // Nothing was to be written.
  EXPECT_FALSE(std::filesystem::exists(dir / "out"));
}

}  // namespace
}  // namespace plenvorith
