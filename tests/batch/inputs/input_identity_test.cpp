#include "batch/inputs/input_identity.h"

#include <cerrno>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

void setTime(const std::string& path, std::int64_t seconds, std::int64_t nanoseconds) {
  const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(IdentityOf, GivesSizeAndTimeToTheNanosecond) {
  const test::TempDir dir;
  test::writeFile(dir / "a", "12345");
  setTime(dir / "a", 1577836800, 123456789);
  int error = 0;
  const auto identity = identityOf(dir / "a", error);
  ASSERT_TRUE(identity.has_value());
  EXPECT_EQ(identity->size, 5);
  EXPECT_EQ(identity->mtime, 1577836800123456789);
  EXPECT_TRUE(identity->isRegular);
  EXPECT_FALSE(identityOf("/dev/null", error)->isRegular);
  EXPECT_FALSE(identityOf(dir / "missing", error).has_value());
  EXPECT_EQ(error, ENOENT);
}

TEST(ContentHash, TellsContentsApart) {
  const test::TempDir dir;
  const std::string long1(1000000, 'a');
  std::string long2 = long1;
  long2[700000] = 'b';
  const std::string a = contentHash(test::writeFile(dir / "a", long1));
  EXPECT_EQ(a.size(), 16U);
  EXPECT_EQ(contentHash(test::writeFile(dir / "b", long1)), a);
  EXPECT_NE(contentHash(test::writeFile(dir / "c", long2)), a);
  EXPECT_NE(contentHash(test::writeFile(dir / "d", "")), a);
  EXPECT_EQ(contentHash(dir / "missing"), "");
  EXPECT_EQ(contentHash(dir.path()), "");
}

TEST(ContentHash, IsTheSameOnEveryMachine) {
  const test::TempDir dir;
  // What the command xxh128sum gives for an empty file.
  const std::string expected = "\x99\xaa\x06\xd3\x01\x47\x98\xd8\x60\x01\xc3\x24\x46\x8d\x49\x7f";
  EXPECT_EQ(contentHash(test::writeFile(dir / "empty", "")), expected);
}

}  // namespace
}  // namespace plenvorith
