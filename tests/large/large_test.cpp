// Runs the program on files of up to 4 GiB that are made for it. Takes minutes, up to 13 GB of
// memory and 10 GB in the temporary directory; hence only if PLENVORITH_LARGE is 1:
//
//   PLENVORITH_LARGE=1 script/test -L large

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

using namespace std::string_literals;

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

/// A STEP file that is written piece by piece, in a directory of its own that is also the
/// directory for the output and for temporary files.
class Large : public testing::Test {
 protected:
  void SetUp() override {
    const char* const wanted = std::getenv("PLENVORITH_LARGE");
    if (wanted == nullptr || wanted != "1"s) {
      GTEST_SKIP() << "takes minutes and 13 GB of memory; set PLENVORITH_LARGE=1 for it";
    }
    file.open(dir / "in.stp", std::ios::binary);
    file << "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n";
  }

  /// Converts the file, which is complete then.
  Outcome convert(const std::string& output, const std::vector<std::string>& more = {}) {
    if (file.is_open()) {
      file << "ENDSEC;\nEND-ISO-10303-21;\n";
      file.close();
      EXPECT_TRUE(file.good()) << "the disk is full";
    }
    std::vector<std::string> arguments = {"in.stp", output};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runProgram({.program = PLENVORITH_PROGRAM,
                       .arguments = arguments,
                       .directory = dir.path(),
                       .environment = {"TMPDIR=."},
                       .timeLimit = std::chrono::minutes{30}});
  }

  /// Expects a run that decoded the one face that every file here has, of these numbers.
  static void expectDecoded(const Outcome& outcome, const std::string& entities,
                            const std::string& triangles) {
    EXPECT_EQ(outcome.out, R"(Reading: in.stp
[1] Analyzing file structure...
  Parsed )" + entities + R"( entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
  Parsed )" + triangles + R"( triangles from tessellation
[5] Writing STL: )" + triangles +
                               " triangles (BRep: 0 + Tess: " + triangles + R"()
Saved: out.stl
Done
)");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
  }

  /// Expects that the program used no more memory than for the text and these bytes of what it
  /// made of it, and a seventh more.
  void expectMemory(const Outcome& outcome, std::int64_t bytes) const {
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(dir / "in.stp"));
    const std::int64_t limit = 40'000'000 + (size + bytes) * 115 / 100;
    RecordProperty("file_bytes", std::to_string(size));
    RecordProperty("peak_bytes", std::to_string(outcome.peakMemory));
    RecordProperty("limit_bytes", std::to_string(limit));
    EXPECT_LE(outcome.peakMemory, limit);
  }

  /// What the STL file holds at `offset`.
  std::string bytesOf(const std::string& name, std::int64_t offset, std::size_t count) const {
    std::ifstream stl(dir / name, std::ios::binary);
    stl.seekg(offset);
    std::string bytes(count, '\0');
    stl.read(bytes.data(), static_cast<std::streamsize>(count));
    return bytes.substr(0, static_cast<std::size_t>(stl.gcount()));
  }

  TempDir dir;
  std::ofstream file;
};

constexpr std::int64_t kTriangleSize = 96;
constexpr std::int64_t kPointSize = 24;
constexpr std::int64_t kEntitySize = 96;  // two strings and the place in the table

/// A representation, its solid, and the coordinates of a square at z = 2.
constexpr std::string_view kStart =
    "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);\n"
    "#2=TESSELLATED_SOLID('',(#3),$);\n"
    "#4=COORDINATES_LIST('',4,((0.,0.,2.),(1.,0.,2.),(1.,1.,2.),(0.,1.,2.)));\n";

// Records of an STL file: the normal (0, 0, 1), three corners and two bytes that are zero.
const std::string kZero = "\0\0\0\0"s;
const std::string kOne = "\0\0\x80\x3F"s;
const std::string kTwo = "\0\0\0\x40"s;
const std::string kNormal = kZero + kZero + kOne;
const std::string kCorner1 = kZero + kZero + kTwo;
const std::string kCorner2 = kOne + kZero + kTwo;
const std::string kCorner3 = kOne + kOne + kTwo;
const std::string kCorner4 = kZero + kOne + kTwo;
const std::string kTriangle123 = kNormal + kCorner1 + kCorner2 + kCorner3 + "\0\0"s;
const std::string kTriangle134 = kNormal + kCorner1 + kCorner3 + kCorner4 + "\0\0"s;

TEST_F(Large, DecodesALineOfOneGibibyte) {
  // Points of 24 bytes each, of which the face takes the last four.
  file << "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);\n"
          "#2=TESSELLATED_SOLID('',(#3),$);\n"
          "#3=COMPLEX_TRIANGULATED_FACE('',#4,2,(),$,(),"
          "((44739241,44739242,44739243),(44739241,44739243,44739244)),());\n"
          "#4=COORDINATES_LIST('',44739244,(";
  const std::string points = repeated("(7.1234567,-3.5,1.2E+1),", 4);
  for (int i = 0; i < 11'184'810; ++i) {
    file << points;
  }
  file << "(0.00000,0.00000,2.000),(1.00000,0.00000,2.000),"
          "(1.00000,1.00000,2.000),(0.00000,1.00000,2.000)));\n";

  const Outcome outcome = convert("out.stl");
  expectDecoded(outcome, "4", "2");
  EXPECT_EQ(std::filesystem::file_size(dir / "out.stl"), 184U);
  EXPECT_EQ(bytesOf("out.stl", 80, 104), "\2\0\0\0"s + kTriangle123 + kTriangle134);
  expectMemory(outcome, 44'739'244 * kPointSize + 2 * kTriangleSize);
}

TEST_F(Large, ReadsTwentyMillionEntities) {
  file << kStart << "#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),$,(),((1,2,3)),());\n";
  for (int number = 5; number <= 20'000'000; ++number) {
    file << '#' << number << "=A(1.);\n";
  }
  const Outcome outcome = convert("out.stl");
  expectDecoded(outcome, "20000000", "1");
  EXPECT_EQ(bytesOf("out.stl", 80, 104), "\1\0\0\0"s + kTriangle123);
  expectMemory(outcome, 20'000'000 * kEntitySize + 4 * kPointSize + kTriangleSize);
}

TEST_F(Large, DecodesAHundredMillionTriangles) {
  file << kStart << "#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),$,(),(\n";
  const std::string line = repeated("(1,2,3),", 10) + "\n";
  for (int i = 0; i < 10'000'000 - 1; ++i) {
    file << line;
  }
  file << repeated("(1,2,3),", 9) << "(1,3,4)),());\n";

  const Outcome outcome = convert("out.stl");
  expectDecoded(outcome, "4", "100000000");
  EXPECT_EQ(std::filesystem::file_size(dir / "out.stl"), 5'000'000'084U);
  EXPECT_EQ(bytesOf("out.stl", 80, 54), "\x00\xE1\xF5\x05"s + kTriangle123);
  EXPECT_EQ(bytesOf("out.stl", 4'999'999'984, 200), kTriangle123 + kTriangle134);
  expectMemory(outcome, 100'000'000 * kTriangleSize + 4 * kPointSize);
}

TEST_F(Large, ReadsAndStripsAFileOfMoreThanFourGibibytes) {
  file << kStart;
  const std::string points = repeated("(0.125,0.25,0.5),", 4096);
  for (int number = 0; number < 1024; ++number) {
    file << "#1" << number << "000=COORDINATES_LIST('',253953,(";
    for (int i = 0; i < 62; ++i) {
      file << points;
    }
    file << "(0.,0.,0.)));\n";
  }
  // Behind 4 GiB.
  file << "#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),$,(),((1,2,3),(1,3,4)),());\n";

  const Outcome outcome = convert("out.stl");
  expectDecoded(outcome, "1028", "2");
  EXPECT_GT(std::filesystem::file_size(dir / "in.stp"), std::uintmax_t{1} << 32);
  EXPECT_EQ(bytesOf("out.stl", 80, 104), "\2\0\0\0"s + kTriangle123 + kTriangle134);
  expectMemory(outcome, 4 * kPointSize + 2 * kTriangleSize);

  const Outcome split = convert("out.stp", {"0.1", "split"});
  EXPECT_THAT(split.out,
              testing::StartsWith("[PREPROCESS] Stripped 1028 lines -> ./in.stp.clean.stp\n"));
  EXPECT_EQ(split.err, "Failed to read BRep from STEP\n");
  EXPECT_EQ(split.exitStatus, 1);
  expectMemory(split, 0);
}

}  // namespace
}  // namespace plenvorith::test
