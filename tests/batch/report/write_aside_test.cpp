#include "batch/report/write_aside.h"

#include <filesystem>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

TEST(WriteAside, ReplacesAFileOnlyWithAWholeOne) {
  const test::TempDir dir;
  const std::string path = test::writeFile(dir / "a", "before");
  EXPECT_FALSE(writeAside(path, [&](std::ostream& file) {
    file << "half";
    EXPECT_EQ(test::readFile(path), "before");
    return false;
  }));
  EXPECT_EQ(test::readFile(path), "before");
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
  EXPECT_TRUE(writeAside(path, [](std::ostream& file) { return bool(file << "after"); }));
  EXPECT_EQ(test::readFile(path), "after");
}

TEST(WriteAside, RemovesNothingThatItHasNotMade) {
  const test::TempDir dir;
  EXPECT_FALSE(writeAside(dir / "missing/a", [](std::ostream&) { return true; }));
  std::filesystem::create_directory(dir / "a.new");
  EXPECT_FALSE(writeAside(dir / "a", [](std::ostream&) { return true; }));
  EXPECT_TRUE(std::filesystem::exists(dir / "a.new"));
}

}  // namespace
}  // namespace plenvorith
