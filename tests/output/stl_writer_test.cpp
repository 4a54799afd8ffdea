#include "output/stl_writer.h"

#include <bit>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "common/little_endian.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;
using test::TempDir;
using test::writeFile;

std::string header() {
  return "Plenvorith binary STL" + std::string(59, '\0');
}

/// The file's bytes for triangles, which also must be accepted.
std::string written(const std::vector<Triangle>& triangles) {
  const TempDir dir;
  const std::string path = dir / "out.stl";
  EXPECT_TRUE(writeBinaryStl(path, triangles));
  return readFile(path);
}

float floatAt(const std::string& bytes, std::size_t offset) {
  return getFloat(bytes.data() + offset);
}

TEST(StlWriter, WritesHeaderAndZeroForNoTriangles) {
  EXPECT_EQ(written({}), header() + std::string(4, '\0'));
}

TEST(StlWriter, WritesOneTriangleByteForByte) {
  const Triangle triangle{{0, 0, 1}, {0, 0, 0}, {1, 0, 0}, {0, -2.5, 0}};
  const std::string zero(4, '\0');
  const std::string one("\x00\x00\x80\x3F", 4);
  const std::string minusTwoAndAHalf("\x00\x00\x20\xC0", 4);
  EXPECT_EQ(written({triangle}), header() + std::string("\x01\x00\x00\x00", 4) +  //
                                     zero + zero + one +                          // normal
                                     zero + zero + zero +                         // vertex 1
                                     one + zero + zero +                          // vertex 2
                                     zero + minusTwoAndAHalf + zero +             // vertex 3
                                     std::string(2, '\0'));
}

TEST(StlWriter, WritesEveryRecordOfManyInOrder) {
  // Many blocks of any size: records lie across the border of most, and one ends at a border.
  constexpr std::size_t kCount = 60'000;
  std::vector<Triangle> triangles(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    const auto n = static_cast<double>(i);
    triangles[i] = {{0, 0, 1}, {n, 1, 2}, {n, 3, 4}, {n, 5, 6}};
  }
  const std::string bytes = written(triangles);
  ASSERT_EQ(bytes.size(), 84 + 50 * kCount);
  EXPECT_EQ(bytes.substr(0, 84), header() + std::string("\x60\xEA\x00\x00", 4));
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::size_t record = 84 + 50 * i;
    ASSERT_EQ(floatAt(bytes, record + 12), static_cast<float>(i)) << "record " << i;
    ASSERT_EQ(floatAt(bytes, record + 44), 6.0F) << "record " << i;
    ASSERT_EQ(bytes.substr(record + 48, 2), std::string(2, '\0')) << "record " << i;
  }
}

TEST(StlWriter, RoundsToTheNearestFloatAndKeepsWhatIsNoFiniteNumber) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::string bytes = written({{{0.1, 16777217.0, 16777219.0},
                                      {1e300, -1e300, nan},
                                      {infinity, 1e-60, -0.0},
                                      {3.4028235677973366e38, 1e-45, 0}}});
  EXPECT_EQ(floatAt(bytes, 84), 0.1F);
  EXPECT_EQ(floatAt(bytes, 88), 16777216.0F);  // half way: to the even one
  EXPECT_EQ(floatAt(bytes, 92), 16777220.0F);
  EXPECT_EQ(floatAt(bytes, 96), std::numeric_limits<float>::infinity());
  EXPECT_EQ(floatAt(bytes, 100), -std::numeric_limits<float>::infinity());
  EXPECT_NE(floatAt(bytes, 104), floatAt(bytes, 104));
  EXPECT_EQ(floatAt(bytes, 108), std::numeric_limits<float>::infinity());
  EXPECT_EQ(floatAt(bytes, 112), 0.0F);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(floatAt(bytes, 116)), 0x80000000U);
  EXPECT_EQ(floatAt(bytes, 120), std::numeric_limits<float>::infinity());
  EXPECT_EQ(floatAt(bytes, 124), std::numeric_limits<float>::denorm_min());
}

TEST(StlWriter, WritesNormalsAsTheyAre) {
  const std::string bytes = written({{{0, 0, 0}, {}, {}, {}}, {{3, 4, 12}, {}, {}, {}}});
  EXPECT_EQ(floatAt(bytes, 84 + 8), 0.0F);
  EXPECT_EQ(floatAt(bytes, 84 + 50), 3.0F);
  EXPECT_EQ(floatAt(bytes, 84 + 58), 12.0F);
}

TEST(StlWriter, OverwritesAnExistingFile) {
  const TempDir dir;
  const std::string path = writeFile(dir / "out.stl", std::string(500, 'x'));
  EXPECT_TRUE(writeBinaryStl(path, {}));
  EXPECT_EQ(readFile(path), header() + std::string(4, '\0'));
}

TEST(StlWriter, RejectsAPathInAMissingDirectory) {
  const TempDir dir;
  const std::string path = dir / "missing/out.stl";
  testing::internal::CaptureStderr();
  EXPECT_FALSE(writeBinaryStl(path, {}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Error: Cannot open " + path + " for writing\n");
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(StlWriter, RejectsADirectory) {
  const TempDir dir;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(writeBinaryStl(dir.path(), {}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Error: Cannot open " + dir.path().string() + " for writing\n");
}

TEST(StlWriter, DoesNotNoticeAFullDisk) {
  EXPECT_TRUE(writeBinaryStl("/dev/full", std::vector<Triangle>(3)));
}

}  // namespace
}  // namespace plenvorith
