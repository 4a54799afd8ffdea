#include "batch/worker/warm_up.h"

#include <filesystem>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

std::ptrdiff_t countDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

TEST(WarmUp, ConvertsItsPart) {
  const test::TempDir folder;
  warmUp(folder.path());
  const std::string mesh = test::readFile(folder / "part.stl");
  ASSERT_GE(mesh.size(), 84U);
  // A cylinder has two ends, of at least one triangle each, and a side of at least two.
  EXPECT_GE((mesh.size() - 84) / 50, 4U);
  EXPECT_EQ((mesh.size() - 84) % 50, 0U);
}

TEST(WarmUp, PrintsNothingAndGivesTheStreamsBack) {
  const test::TempDir folder;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const std::ptrdiff_t before = countDescriptors();
  warmUp(folder.path());
  EXPECT_EQ(countDescriptors(), before);
  EXPECT_EQ(write(STDOUT_FILENO, "out", 3), 3);
  EXPECT_EQ(write(STDERR_FILENO, "err", 3), 3);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "err");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "out");
}

TEST(WarmUp, DoesNothingWhereItCannotWrite) {
  const test::TempDir folder;
  testing::internal::CaptureStderr();
  warmUp(folder / "missing");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace plenvorith
