#include "batch/system/work_folder.h"

#include <filesystem>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;

TEST(WorkFolder, GoesWithAllThatIsInIt) {
  const test::TempDir dir;
  {
    const WorkFolder folder(dir / "a/run");
    ASSERT_TRUE(fs::is_directory(folder.path()));
    EXPECT_EQ(fs::path(folder.path()).parent_path(), dir / "a/run");
    EXPECT_THAT(fs::path(folder.path()).filename().string(), testing::MatchesRegex("[0-9a-f]+"));
    EXPECT_EQ(fs::path(folder.path()).filename().string().size(), 16U);
    fs::create_directory(folder.path() + "/sub");
    test::writeFile(folder.path() + "/sub/file", "x");
  }
  EXPECT_TRUE(fs::exists(dir / "a"));
  EXPECT_FALSE(fs::exists(dir / "a/run"));
}

TEST(WorkFolder, LeavesThoseOfOthersAlone) {
  const test::TempDir dir;
  const WorkFolder other(dir / "run");
  {
    WorkFolder folder(dir / "run");
    EXPECT_NE(folder.path(), other.path());
    const WorkFolder moved(std::move(folder));
    EXPECT_TRUE(fs::is_directory(moved.path()));
  }
  EXPECT_TRUE(fs::is_directory(other.path()));
}

TEST(WorkFolder, HasNoPathWhereItCannotBeMade) {
  const test::TempDir dir;
  test::writeFile(dir / "file", "");
  EXPECT_EQ(WorkFolder(dir / "file").path(), "");
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_EQ(WorkFolder().path(), "");
  EXPECT_TRUE(fs::exists(dir / "file"));
}

}  // namespace
}  // namespace plenvorith
