#include "batch/system/folder.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Folder, GivesNamesInTheOrderOfTheirBytes) {
  const test::TempDir dir;
  for (const char* name : {"b", "a\xff", ".a", "B"}) {
    test::writeFile(dir / name, "");
  }
  EXPECT_THAT(namesInFolder(dir.path()), ElementsAre(".a", "B", "a\xff", "b"));
  EXPECT_THAT(namesInFolder(dir / "missing"), IsEmpty());
}

TEST(Folder, MakesAllThatIsMissing) {
  const test::TempDir dir;
  EXPECT_TRUE(makeFolders(dir / "a/b/c"));
  EXPECT_TRUE(makeFolders(dir / "a/b/c"));
  EXPECT_TRUE(fs::is_directory(dir / "a/b/c"));
  test::writeFile(dir / "file", "");
  EXPECT_FALSE(makeFolders(dir / "file"));
  EXPECT_FALSE(makeFolders(dir / "file/below"));
  fs::create_symlink("nowhere", dir / "dead");
  EXPECT_FALSE(makeFolders(dir / "dead/below"));
}

TEST(Folder, MakesWhatOthersMakeAtTheSameTime) {
  const test::TempDir dir;
  constexpr int kRounds = 100;
  constexpr int kThreads = 4;
  std::atomic<int> waiting = 0;
  std::atomic<int> failures = 0;
  const auto make = [&] {
    for (int round = 1; round <= kRounds; ++round) {
      ++waiting;
      while (waiting < round * kThreads) {
        std::this_thread::yield();
      }
      failures += makeFolders(dir / std::to_string(round) + "/a/b") ? 0 : 1;
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back(make);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failures, 0);
}

TEST(Folder, EmptiesAndRemovesWithoutFollowingLinks) {
  const test::TempDir dir;
  ASSERT_TRUE(makeFolders(dir / "a/b"));
  ASSERT_TRUE(makeFolders(dir / "other"));
  test::writeFile(dir / "other/kept", "");
  fs::create_symlink(dir / "other", dir / "a/link");
  EXPECT_TRUE(makeEmptyFolder(dir / "a"));
  EXPECT_THAT(namesInFolder(dir / "a"), IsEmpty());
  removeTree(dir / "a");
  removeTree(dir / "a");
  EXPECT_THAT(namesInFolder(dir.path()), ElementsAre("other"));
  EXPECT_THAT(namesInFolder(dir / "other"), ElementsAre("kept"));
}

TEST(Folder, RemovesEmptyFoldersUpToOneThatStays) {
  const test::TempDir dir;
  ASSERT_TRUE(makeFolders(dir / "out/a/b"));
  removeEmptyFolders(dir / "out", dir / "out/a/b/gone.stl");
  EXPECT_THAT(namesInFolder(dir / "out"), IsEmpty());
  EXPECT_TRUE(fs::is_directory(dir / "out"));
  ASSERT_TRUE(makeFolders(dir / "out/a/b"));
  test::writeFile(dir / "out/a/kept", "");
  removeEmptyFolders(dir / "out", dir / "out/a/b/gone.stl");
  EXPECT_THAT(namesInFolder(dir / "out/a"), ElementsAre("kept"));
}

TEST(Folder, OfAPathIsWhatStandsBeforeTheLastSlash) {
  EXPECT_EQ(folderOf("/a/b/c.stp"), "/a/b");
  EXPECT_EQ(folderOf("/c.stp"), "");
  EXPECT_EQ(folderOf("c.stp"), "");
}

TEST(AbsolutePath, IsTakenByItsText) {
  EXPECT_EQ(absolutePath("/a/./b/../c//"), "/a/c");
  EXPECT_EQ(absolutePath("/"), "/");
  EXPECT_EQ(absolutePath("x"), std::filesystem::current_path().string() + "/x");
}

}  // namespace
}  // namespace plenvorith
