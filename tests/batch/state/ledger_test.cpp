#include "batch/state/ledger.h"

#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "batch/inputs/input_identity.h"
#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// An output folder with its state, and inputs beside it.
class LedgerTest : public testing::Test {
 protected:
  LedgerTest() {
    context.places = placesIn(dir / "out");
    context.base = dir / "in/";
    context.settings = "to=stl";
    context.program = "1";
    context.run = 1;
    EXPECT_TRUE(makeFolders(context.places.run) && makeFolders(dir / "in"));
    state = test::openedState(context.places.database);
  }

  /// A conversion that made files with these names and four bytes each.
  Finished converted(const std::string& name, const std::vector<std::string>& outputs) {
    Finished finished;
    finished.input = test::writeFile(dir / "in/" + name, "input");
    const timespec times[] = {{1577836800, 0}, {1577836800, 0}};
    utimensat(AT_FDCWD, finished.input.c_str(), times, 0);
    finished.outFolder = context.places.run + "/1";
    EXPECT_TRUE(makeEmptyFolder(finished.outFolder));
    for (const std::string& output : outputs) {
      test::writeFile(finished.outFolder + "/" + output, "1234");
      finished.result.outputs.push_back({output, 4});
    }
    int error = 0;
    finished.result.isConverted = true;
    finished.result.size = 5;
    const InputIdentity identity = *identityOf(finished.input, error);
    finished.result.mtime = identity.mtime;
    finished.result.changed = identity.changed;
    finished.result.inode = identity.inode;
    finished.result.hash = contentHash(finished.input);
    finished.result.started = nanosecondsNow();
    finished.outputName = name + ".stl";
    finished.transcript = test::writeFile(context.places.run + "/transcript", "said\n");
    return finished;
  }

  static Finished failed(Finished finished) {
    finished.result.isConverted = false;
    finished.result.outputs.clear();
    finished.result.reason = "why";
    return finished;
  }

  FileRecord settleOne(const Finished& finished) {
    const auto records = settle(*state, context, {finished});
    EXPECT_EQ(records.size(), 1U);
    return records.at(0).record;
  }

  /// The names in the output folder, but for the state's.
  std::vector<std::string> outputs() const {
    std::vector<std::string> names = namesInFolder(dir / "out");
    std::erase(names, ".plenvorith-batch");
    return names;
  }

  bool isUpToDateNow(const std::string& name) {
    auto record = findFile(*state, dir / "in/" + name);
    bool isTouched = false;
    return record && isUpToDate(context, dir / "in/" + name, *record, isTouched);
  }

  test::TempDir dir;
  RunContext context;
  State state;
};

TEST_F(LedgerTest, MovesOutputsAndKnowsThem) {
  const FileRecord record = settleOne(converted("a.stp", {"a.stp.stl"}));
  EXPECT_EQ(record.status, FileStatus::Converted);
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl"));
  EXPECT_TRUE(isUpToDateNow("a.stp"));
}

TEST_F(LedgerTest, RemovesOutputsThatAreNotMadeAgain) {
  settleOne(converted("a.stp", {"a.stp.stl_1.stl", "a.stp.stl_2.stl"}));
  settleOne(converted("a.stp", {"a.stp.stl_1.stl"}));
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl_1.stl"));
  const FileRecord record = settleOne(failed(converted("a.stp", {})));
  EXPECT_EQ(record.status, FileStatus::Failed);
  EXPECT_THAT(outputs(), IsEmpty());
  EXPECT_THAT(findFile(*state, record.path)->outputs, IsEmpty());
  EXPECT_FALSE(isUpToDateNow("a.stp"));
}

TEST_F(LedgerTest, FailsWhereAnOutputCannotBeMoved) {
  ASSERT_TRUE(makeFolders(dir / "out/a.stp.stl_2.stl/x"));
  const FileRecord record = settleOne(converted("a.stp", {"a.stp.stl_1.stl", "a.stp.stl_2.stl"}));
  EXPECT_EQ(record.status, FileStatus::Failed);
  EXPECT_THAT(record.reason, testing::StartsWith("cannot be moved into place: "));
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl_2.stl"));
}

TEST_F(LedgerTest, TakesNothingForConvertedThatWasBeingDelivered) {
  FileRecord record = settleOne(converted("a.stp", {"a.stp.stl"}));
  record.status = FileStatus::Delivering;
  record.outputs.push_back({"a.stp.stl_9.stl", 4});
  ASSERT_TRUE(putFile(*state, record));
  test::writeFile(dir / "out/a.stp.stl_9.stl", "1234");
  EXPECT_FALSE(isUpToDateNow("a.stp"));
  settleOne(converted("a.stp", {"a.stp.stl"}));
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl"));
}

TEST_F(LedgerTest, NeverRemovesWhatAnotherInputMade) {
  // The second output of a.stp has the name of the only one of a.stp.stl_2.stp.
  settleOne(converted("a.stp", {"a.stp.stl", "a.stp.stl_2.stp.stl"}));
  settleOne(converted("a.stp.stl_2.stp", {"a.stp.stl_2.stp.stl"}));
  settleOne(converted("a.stp", {"a.stp.stl"}));
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl", "a.stp.stl_2.stp.stl"));
  EXPECT_TRUE(isUpToDateNow("a.stp") && isUpToDateNow("a.stp.stl_2.stp"));
}

TEST_F(LedgerTest, GivesOutputsTheirRightNames) {
  Finished finished = converted("\xff.stp", {"output.stl", "output.stl_1.stl"});
  finished.outputName = "output.stl";
  settleOne(finished);
  EXPECT_THAT(outputs(), ElementsAre("\xff.stp.stl", "\xff.stp.stl_1.stl"));
}

TEST_F(LedgerTest, KeepsWhatWasMadeOfAFileThatCannotBeTried) {
  const FileRecord before = settleOne(converted("a.stp", {"a.stp.stl"}));
  Finished finished = failed(converted("a.stp", {}));
  finished.result.isTried = false;
  const auto settled = settle(*state, context, {finished});
  ASSERT_EQ(settled.size(), 1U);
  EXPECT_TRUE(settled[0].isKept);
  EXPECT_EQ(settled[0].obstacle, "why");
  EXPECT_EQ(findFile(*state, before.path)->status, FileStatus::Converted);
  EXPECT_THAT(outputs(), ElementsAre("a.stp.stl"));
  EXPECT_EQ(findTranscript(*state, before.path), "said\n");
  EXPECT_TRUE(isUpToDateNow("a.stp"));
}

TEST_F(LedgerTest, TakesTranscriptsIntoTheState) {
  const Finished finished = failed(converted("a.stp", {}));
  settleOne(finished);
  EXPECT_EQ(findTranscript(*state, finished.input), "said\n");
  EXPECT_FALSE(fs::exists(finished.transcript));
}

TEST_F(LedgerTest, CutsLongTranscriptsInTheMiddle) {
  constexpr std::size_t kHalf = std::size_t{1} << 19;
  const Finished finished = failed(converted("a.stp", {}));
  test::writeFile(finished.transcript, std::string(kHalf, 'a') + "12345" + std::string(kHalf, 'z'));
  settleOne(finished);
  EXPECT_EQ(findTranscript(*state, finished.input),
            std::string(kHalf, 'a') + "\n[5 bytes are left out here]\n" + std::string(kHalf, 'z'));
}

TEST_F(LedgerTest, FindsOutputsThatWouldReplaceThoseOfOthers) {
  settleOne(converted("a.stp", {"a.stp.stl"}));
  RunRecord run;
  run.base = context.base;
  ASSERT_NE(putRun(*state, run), 0);
  EXPECT_EQ(findCollision(*state, context, {{dir / "in/a.stp", 1}}), "");
  context.base = dir / "other/";
  EXPECT_THAT(findCollision(*state, context, {{dir / "other/b.stp", 1}, {dir / "other/a.stp", 1}}),
              testing::StartsWith("the output of " + (dir / "other/a.stp") +
                                  " would replace that of " + (dir / "in/a.stp") + ": --base "));
  EXPECT_EQ(findCollision(*state, context, {{dir / "other/b.stp", 1}}), "");
}

TEST_F(LedgerTest, KnowsWhatDiffers) {
  settleOne(converted("a.stp", {"a.stp.stl"}));
  const RunContext before = context;
  context.settings = "to=stp";
  EXPECT_FALSE(isUpToDateNow("a.stp"));
  context = before;
  context.program = "2";
  EXPECT_FALSE(isUpToDateNow("a.stp"));
  context = before;
  context.base = dir.path().string() + '/';
  EXPECT_FALSE(isUpToDateNow("a.stp"));
  context = before;
  EXPECT_TRUE(isUpToDateNow("a.stp"));
  fs::resize_file(dir / "out/a.stp.stl", 3);
  EXPECT_FALSE(isUpToDateNow("a.stp"));
}

TEST_F(LedgerTest, KnowsAnInputByItsContentWhereTheTimeDiffers) {
  settleOne(converted("a.stp", {"a.stp.stl"}));
  const timespec older[] = {{946684800, 0}, {946684800, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, (dir / "in/a.stp").c_str(), older, 0), 0);
  auto record = findFile(*state, dir / "in/a.stp");
  bool isTouched = false;
  EXPECT_TRUE(isUpToDate(context, record->path, *record, isTouched));
  EXPECT_TRUE(isTouched);
  EXPECT_EQ(record->mtime, 946684800000000000);
  test::writeFile(dir / "in/a.stp", "other");
  ASSERT_EQ(utimensat(AT_FDCWD, (dir / "in/a.stp").c_str(), older, 0), 0);
  EXPECT_FALSE(isUpToDateNow("a.stp"));
}

TEST_F(LedgerTest, TrustsNoTimeThatIsYoungOrInTheFuture) {
  Finished finished = converted("a.stp", {"a.stp.stl"});
  for (const std::int64_t seconds : {std::time(nullptr), std::time(nullptr) + 1000000}) {
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, finished.input.c_str(), times, 0), 0);
    int error = 0;
    const InputIdentity identity = *identityOf(finished.input, error);
    finished.result.mtime = identity.mtime;
    finished.result.changed = identity.changed;
    finished.result.started = nanosecondsNow();
    test::writeFile(finished.outFolder + "/a.stp.stl", "1234");
    settleOne(finished);
    EXPECT_TRUE(isUpToDateNow("a.stp"));
    test::writeFile(finished.input, "INPUT");
    ASSERT_EQ(utimensat(AT_FDCWD, finished.input.c_str(), times, 0), 0);
    EXPECT_FALSE(isUpToDateNow("a.stp"));
    test::writeFile(finished.input, "input");
  }
}

TEST_F(LedgerTest, PrunesWhatVanishedInputsMade) {
  settleOne(converted("a.stp", {"a.stp.stl"}));
  settleOne(converted("b.stp", {"b.stp.stl"}));
  fs::remove(dir / "in/a.stp");
  EXPECT_EQ(prune(*state, context.places), 1);
  EXPECT_THAT(outputs(), ElementsAre("b.stp.stl"));
  EXPECT_FALSE(findFile(*state, dir / "in/a.stp").has_value());
  EXPECT_EQ(prune(*state, context.places), 0);
}

TEST(NameBelow, IsThePathBelowTheBase) {
  EXPECT_EQ(nameBelow("/in/", "/in/sub/a.stp"), "sub/a.stp");
  EXPECT_EQ(nameBelow("/in/", "/other/a.stp"), "/other/a.stp");
}

}  // namespace
}  // namespace plenvorith
