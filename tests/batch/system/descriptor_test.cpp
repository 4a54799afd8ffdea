#include "batch/system/descriptor.h"

#include <string>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

bool isOpenInSystem(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

TEST(Descriptor, ClosesAtTheEndOfItsScopeAndMoves) {
  int number = -1;
  {
    Descriptor first(open("/dev/null", O_RDONLY));
    number = first.get();
    Descriptor second(std::move(first));
    EXPECT_EQ(second.get(), number);
    Descriptor third;
    EXPECT_FALSE(third.isOpen());
    third = std::move(second);
    EXPECT_TRUE(isOpenInSystem(number));
  }
  EXPECT_FALSE(isOpenInSystem(number));
}

TEST(WriteAll, SaysWhetherAllWasWritten) {
  const test::TempDir dir;
  const Descriptor file(open((dir / "a").c_str(), O_WRONLY | O_CREAT, 0600));
  EXPECT_TRUE(writeAll(file.get(), "text"));
  EXPECT_EQ(test::readFile(dir / "a"), "text");
  const Descriptor full(open("/dev/full", O_WRONLY));
  EXPECT_FALSE(writeAll(full.get(), "text"));
}

TEST(ReadEnds, LeavesOutTheMiddleOfALongFile) {
  const test::TempDir dir;
  test::writeFile(dir / "a", "0123456789");
  const Descriptor file(open((dir / "a").c_str(), O_RDONLY));
  EXPECT_EQ(readEnds(file.get(), 10), "0123456789");
  EXPECT_EQ(readEnds(file.get(), 6), "012789");
  const Descriptor null(open("/dev/null", O_RDONLY));
  EXPECT_EQ(readEnds(null.get(), 6), "");
}

}  // namespace
}  // namespace plenvorith
