#include "check/stl_reader.h"

#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/check/meshes.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::cubeAt;
using test::stlFile;
using test::StlRecord;

struct Read {
  std::string problem;
  std::vector<StlRecord> triangles;
};

Read readFrom(const std::string& path) {
  Read read;
  read.problem = readBinaryStl(
      path, [&](std::uint64_t, std::uint64_t first, std::span<const StlTriangle> triangles) {
        EXPECT_EQ(first, read.triangles.size());
        read.triangles.insert(read.triangles.end(), triangles.begin(), triangles.end());
        return true;
      });
  return read;
}

Read readContent(const std::string& content) {
  test::MemoryFile file;
  return readFrom(file.write(content));
}

TEST(StlReader, ReadsTriangles) {
  const std::vector<StlRecord> cube = cubeAt(1, 2, 3);
  const Read read = readContent(stlFile(cube));
  EXPECT_EQ(read.problem, "");
  EXPECT_EQ(read.triangles, cube);
}

TEST(StlReader, ReadsMoreThanABlock) {
  std::vector<StlRecord> many;
  many.reserve(10'001);
  for (int i = 0; i < 10'001; ++i) {
    many.push_back({0, 0, 1, static_cast<float>(i), 0, 0, 1, 0, 0, 0, 1, 0});
  }
  const Read read = readContent(stlFile(many));
  EXPECT_EQ(read.problem, "");
  EXPECT_EQ(read.triangles, many);
}

TEST(StlReader, ReadsFileWithoutTriangles) {
  const Read read = readContent(stlFile({}));
  EXPECT_EQ(read.problem, "");
  EXPECT_TRUE(read.triangles.empty());
}

TEST(StlReader, ReadsBinaryFileWhoseHeaderBeginsLikeText) {
  std::string content = stlFile(cubeAt(0, 0, 0));
  content.replace(0, 8, "solid of");
  EXPECT_EQ(readContent(content).problem, "");
}

TEST(StlReader, TakesNormalsAsTheyAre) {
  std::vector<StlRecord> cube = cubeAt(0, 0, 0);
  cube[3][1] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(readContent(stlFile(cube)).problem, "");
}

TEST(StlReader, EndsWhenToldTo) {
  test::MemoryFile file;
  int calls = 0;
  EXPECT_EQ(readBinaryStl(file.write(stlFile(std::vector<StlRecord>(9000))),
                          [&](std::uint64_t count, std::uint64_t, std::span<const StlTriangle>) {
                            EXPECT_EQ(count, 9000);
                            ++calls;
                            return false;
                          }),
            "");
  EXPECT_EQ(calls, 1);
}

TEST(StlReader, RejectsFileThatIsNotThere) {
  EXPECT_EQ(readFrom("/nowhere/at-all.stl").problem, "cannot be opened");
}

TEST(StlReader, RejectsFolder) {
  const test::TempDir folder;
  EXPECT_EQ(readFrom(folder.path()).problem, "cannot be read");
}

TEST(StlReader, RejectsEmptyFile) {
  EXPECT_EQ(readContent("").problem,
            "ends after 0 bytes, inside the 84 in front of the first triangle");
}

TEST(StlReader, RejectsFileThatEndsBeforeItsCount) {
  EXPECT_EQ(readContent(std::string(83, 'x')).problem,
            "ends after 83 bytes, inside the 84 in front of the first triangle");
}

TEST(StlReader, RejectsFileThatEndsInsideATriangle) {
  std::string content = stlFile(cubeAt(0, 0, 0));
  content.pop_back();
  EXPECT_EQ(readContent(content).problem,
            "ends after 11 of the 12 triangles that it says it has (byte 683)");
}

TEST(StlReader, RejectsCountThatLies) {
  std::string content = stlFile(cubeAt(0, 0, 0));
  content.replace(80, 4, "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(readContent(content).problem,
            "ends after 12 of the 4294967295 triangles that it says it has (byte 684)");
}

TEST(StlReader, RejectsBytesBehindTheTriangles) {
  EXPECT_EQ(readContent(stlFile(cubeAt(0, 0, 0)) + "x").problem,
            "has 1 byte behind the 12 triangles that it says it has");
}

TEST(StlReader, RejectsText) {
  EXPECT_EQ(readContent("solid cube\n  facet normal 0 0 1\n    outer loop\n").problem,
            "is STL in text form, or damaged: only binary STL is read");
}

TEST(StlReader, RejectsVerticesThatAreNoPlaces) {
  for (const float none :
       {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity()}) {
    std::vector<StlRecord> cube = cubeAt(0, 0, 0);
    cube[4][8] = none;
    EXPECT_EQ(readContent(stlFile(cube)).problem,
              "has no finite number in vertex 2 of triangle 5 (byte 308)");
  }
}

TEST(StlReader, LooksAtEveryCoordinateOfAVertex) {
  for (std::size_t i = 0; i < 9; ++i) {
    std::vector<StlRecord> cube = cubeAt(0, 0, 0);
    cube[0][3 + i] = std::numeric_limits<float>::quiet_NaN();
    const std::size_t vertex = 1 + i / 3;
    EXPECT_EQ(readContent(stlFile(cube)).problem,
              "has no finite number in vertex " + std::to_string(vertex) + " of triangle 1 (byte " +
                  std::to_string(84 + 12 * vertex) + ")");
  }
}

TEST(StlReader, RejectsPipe) {
  EXPECT_EQ(readFrom("/dev/zero").problem, "is no regular file");
}

}  // namespace
}  // namespace plenvorith
