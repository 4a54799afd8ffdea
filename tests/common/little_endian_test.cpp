#include "common/little_endian.h"

#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

TEST(LittleEndian, PutsTheLeastByteFirst) {
  std::string text = "....?";
  EXPECT_EQ(putUint32(text.data(), 0x80FF0201U), text.data() + 4);
  EXPECT_EQ(text, "\x01\x02\xFF\x80?");
}

TEST(LittleEndian, PutsFloatsInTheirIeeeForm) {
  std::string text = "....?";
  EXPECT_EQ(putFloat(text.data(), -1.5F), text.data() + 4);
  EXPECT_EQ(text, std::string("\0\0\xC0\xBF?", 5));
}

TEST(LittleEndian, TakesTheLeastByteFirst) {
  EXPECT_EQ(getUint32("\x01\x02\xFF\x80"), 0x80FF0201U);
  EXPECT_EQ(getFloat("\0\0\xC0\xBF"), -1.5F);
}

}  // namespace
}  // namespace plenvorith
