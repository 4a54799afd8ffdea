#include "batch/inputs/find_files.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "batch/system/folder.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

void makeFile(const std::string& path) {
  ASSERT_TRUE(makeFolders(folderOf(path)));
  test::writeFile(path, "1234");
}

Options optionsFor(std::vector<std::string> inputs) {
  Options options;
  options.inputs = std::move(inputs);
  return options;
}

/// The paths of the files below the base.
std::vector<std::string> namesOf(const FoundFiles& found) {
  std::vector<std::string> names;
  for (const InputFile& file : found.files) {
    names.push_back(file.path.substr(found.base.size()));
  }
  return names;
}

TEST(FindFiles, GivesEachFileOnceInTheOrderOfItsBytes) {
  const test::TempDir dir;
  for (const char* name : {"in/b.stp", "in/B.STEP", "in/sub/a.p21", "in/a\xff.stp", "in/x.txt"}) {
    makeFile(dir / name);
  }
  const FoundFiles found =
      findFiles(optionsFor({dir / "in", dir / "in/b.stp", dir / "in/./sub/../sub"}), dir / "out");
  EXPECT_EQ(found.wrongUse, "");
  EXPECT_EQ(found.base, dir / "in/");
  EXPECT_THAT(namesOf(found), ElementsAre("B.STEP", "a\xff.stp", "b.stp", "sub/a.p21"));
  EXPECT_EQ(found.files[0].size, 4);
}

TEST(FindFiles, TakesTheDeepestFolderThatHoldsAllForTheBase) {
  const test::TempDir dir;
  makeFile(dir / "x/a.stp");
  makeFile(dir / "x/sub/b.stp");
  makeFile(dir / "xy/c.stp");
  EXPECT_EQ(findFiles(optionsFor({dir / "x/sub/b.stp"}), "").base, dir / "x/sub/");
  EXPECT_EQ(findFiles(optionsFor({dir / "x/a.stp", dir / "x/sub"}), "").base, dir / "x/");
  EXPECT_EQ(findFiles(optionsFor({dir / "x", dir / "xy"}), "").base, dir.path().string() + '/');
  EXPECT_EQ(findFiles(optionsFor({"/"}), "").base, "/");
}

TEST(FindFiles, RejectsABaseThatDoesNotHoldAll) {
  const test::TempDir dir;
  makeFile(dir / "x/a.stp");
  Options options = optionsFor({dir / "x"});
  options.base = dir / "xy";
  EXPECT_NE(findFiles(options, "").wrongUse, "");
  options.base = dir.path();
  EXPECT_EQ(findFiles(options, "").wrongUse, "");
}

TEST(FindFiles, LeavesOutOutputFolders) {
  const test::TempDir dir;
  makeFile(dir / "in/a.stp");
  makeFile(dir / "in/out/b.stp");
  makeFile(dir / "in/older/.plenvorith-batch/c.stp");
  makeFile(dir / "in/older/d.stp");
  const FoundFiles found = findFiles(optionsFor({dir / "in"}), dir / "in/out");
  EXPECT_THAT(namesOf(found), ElementsAre("a.stp"));
  EXPECT_EQ(found.skipped.at("folders of outputs").count, 2);
  // One that is named is looked into, but for the state.
  EXPECT_THAT(namesOf(findFiles(optionsFor({dir / "in/older"}), dir / "x")), ElementsAre("d.stp"));
}

TEST(FindFiles, FollowsLinksToFilesAndOnDemandToFoldersButNeverRound) {
  const test::TempDir dir;
  makeFile(dir / "in/a.stp");
  makeFile(dir / "else/b.stp");
  fs::create_symlink("a.stp", dir / "in/link.stp");
  fs::create_symlink(dir / "else", dir / "in/folder");
  fs::create_symlink("..", dir / "else/up");
  fs::create_symlink(".", dir / "in/self");
  const std::string kLinks = "links to folders (--follow looks into them)";
  Options options = optionsFor({dir / "in"});
  FoundFiles found = findFiles(options, dir / "out");
  EXPECT_THAT(namesOf(found), ElementsAre("a.stp", "link.stp"));
  EXPECT_EQ(found.skipped.at(kLinks).count, 2);
  options.followLinks = true;
  found = findFiles(options, dir / "out");
  EXPECT_FALSE(found.skipped.contains(kLinks));
  EXPECT_GE(found.skipped.at("links to a folder around them").count, 2);
  const std::vector<std::string> names = namesOf(found);
  EXPECT_NE(std::find(names.begin(), names.end(), "folder/b.stp"), names.end());
}

TEST(FindFiles, CountsAndNamesWhatMayHoldGeometryAllTheSame) {
  const test::TempDir dir;
  for (const char* name :
       {"a.stp", "a.stpz", "b.STPZ", "sub/c.zip", "d.ste", "e.igs", "notes.txt"}) {
    makeFile(dir / "in/" + name);
  }
  fs::create_symlink("nowhere", dir / "in/dead.stp");
  fs::create_symlink("nowhere", dir / "in/parts");
  const FoundFiles found = findFiles(optionsFor({dir / "in"}), dir / "out");
  EXPECT_THAT(namesOf(found), ElementsAre("a.stp"));
  ASSERT_EQ(found.skipped.size(), 5);
  EXPECT_EQ(found.skipped.at("files that end in .ste").count, 1);
  EXPECT_EQ(found.skipped.at("files that end in .igs").count, 1);
  EXPECT_EQ(found.skipped.at("files that end in .stpz").count, 2);
  EXPECT_THAT(found.skipped.at("files that end in .zip").examples, ElementsAre("sub/c.zip"));
  EXPECT_THAT(found.skipped.at("links that lead nowhere").examples,
              testing::UnorderedElementsAre("dead.stp", "parts"));
}

TEST(FindFiles, NamesOnlyTheFirstOfMany) {
  const test::TempDir dir;
  for (int i = 0; i < 9; ++i) {
    makeFile(dir / "in/a.zip" + std::to_string(i) + ".zip");
  }
  const Skipped skipped =
      findFiles(optionsFor({dir / "in"}), dir / "out").skipped.at("files that end in .zip");
  EXPECT_EQ(skipped.count, 9);
  EXPECT_EQ(skipped.examples.size(), 5);
}

TEST(FindFiles, LeavesOutAFolderThatIsExcludedWithASlash) {
  const test::TempDir dir;
  makeFile(dir / "in/sub/a.stp");
  makeFile(dir / "in/x.d/sub/b.stp");
  makeFile(dir / "in/c.stp");
  Options options = optionsFor({dir / "in"});
  options.exclude = {"sub/", "c.stp/"};
  EXPECT_THAT(namesOf(findFiles(options, dir / "out")), ElementsAre("c.stp"));
}

TEST(FindFiles, ReportsWhatIsListedAndWrongAndGoesOn) {
  const test::TempDir dir;
  makeFile(dir / "a.stp");
  Options options;
  options.listing = test::writeFile(dir / "list", dir / "a.stp\r\n" + (dir / "no.stp\n") +
                                                      (dir / "no.txt\r\n") + (dir / "x.txt"));
  makeFile(dir / "x.txt");
  const FoundFiles found = findFiles(options, dir / "out");
  EXPECT_EQ(found.wrongUse, "");
  EXPECT_THAT(namesOf(found), ElementsAre("a.stp", "no.stp"));
  EXPECT_EQ(found.files[0].size, 4);
  EXPECT_EQ(found.files[1].size, 0);  // of what cannot be looked at
  EXPECT_THAT(found.problems, ElementsAre("missing: " + (dir / "no.txt"),
                                          "not named like a STEP file: " + (dir / "x.txt")));
}

TEST(FindFiles, RejectsNamedInputsThatAreWrong) {
  const test::TempDir dir;
  makeFile(dir / "a.txt");
  EXPECT_EQ(findFiles(optionsFor({dir / "a.txt"}), "").wrongUse,
            "not named like a STEP file: " + (dir / "a.txt"));
  EXPECT_EQ(findFiles(optionsFor({dir / "no.stp"}), "").wrongUse, "missing: " + (dir / "no.stp"));
  EXPECT_EQ(findFiles(optionsFor({dir / "parts"}), "").wrongUse, "missing: " + (dir / "parts"));
  EXPECT_EQ(findFiles(optionsFor({dir / "a.txt/b.stp"}), "").wrongUse,
            "missing: " + (dir / "a.txt/b.stp"));
}

TEST(IsNamedLikeStep, LooksAtTheEndOnly) {
  for (const char* name : {"a.stp", "a.STEP", ".p21", "x.stp.StP"}) {
    EXPECT_TRUE(isNamedLikeStep(name)) << name;
  }
  for (const char* name : {"", "stp", "a.stpx", "a.stp.txt", "a.st"}) {
    EXPECT_FALSE(isNamedLikeStep(name)) << name;
  }
}

TEST(PathsInListing, AreEndedByNulOrLineFeed) {
  EXPECT_THAT(pathsInListing("a\nb c\n\nd"), ElementsAre("a", "b c", "d"));
  EXPECT_THAT(pathsInListing("a\r\n\r\nb\rc\r\nd"), ElementsAre("a", "b\rc", "d"));
  EXPECT_THAT(pathsInListing(std::string("a\r\0b\0", 5)), ElementsAre("a\r", "b"));
  EXPECT_THAT(pathsInListing(std::string("a\nb\0c\0", 6)), ElementsAre("a\nb", "c"));
  EXPECT_THAT(pathsInListing(""), IsEmpty());
}

TEST(MatchesGlob, LooksAtThePathOnlyWhereTheGlobHasASlash) {
  EXPECT_TRUE(matchesGlob("a*", "sub/abc.stp", false));
  EXPECT_FALSE(matchesGlob("sub*", "sub/abc.stp", false));
  EXPECT_TRUE(matchesGlob("sub/*", "sub/deep/abc.stp", false));
  EXPECT_FALSE(matchesGlob("*.STP", "a.stp", false));
  EXPECT_TRUE(matchesGlob("[ab]?.stp", "a\xff.stp", false));
}

}  // namespace
}  // namespace plenvorith
