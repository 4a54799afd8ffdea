// Prepares files of more than 4 GiB that are made for it. Takes minutes and 9 GB in the temporary
// directory; hence only if PLENVORITH_LARGE is 1.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

using namespace std::string_literals;

constexpr std::int64_t kGibibyte = std::int64_t{1} << 30;
constexpr std::int64_t kMebibyte = std::int64_t{1} << 20;

class LargePrepare : public testing::Test {
 protected:
  void SetUp() override {
    const char* const wanted = std::getenv("PLENVORITH_LARGE");
    if (wanted == nullptr || wanted != "1"s) {
      GTEST_SKIP() << "takes minutes and 9 GB of disk; set PLENVORITH_LARGE=1 for it";
    }
    file.open(dir / "in.stp", std::ios::binary);
    file << "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n";
  }

  /// Writes a text until the file is `size` bytes long, and gives how often that was.
  std::int64_t fill(std::string_view text, std::int64_t size) {
    std::string block;
    constexpr std::int64_t kTimes = 10000;
    for (std::int64_t i = 0; i < kTimes; ++i) {
      block += text;
    }
    std::int64_t times = 0;
    for (; file.tellp() < size; times += kTimes) {
      file << block;
    }
    return times;
  }

  Outcome prepare() {
    file << "ENDSEC;\nEND-ISO-10303-21;\n";
    file.close();
    EXPECT_TRUE(file.good()) << "the disk is full";
    return runProgram({.program = PLENVORITH_PREPARE,
                       .arguments = {"in.stp", "out.stp"},
                       .directory = dir.path(),
                       .environment = {},
                       .timeLimit = std::chrono::minutes{30}});
  }

  /// The last bytes of the prepared file.
  std::string end(std::int64_t count) const {
    std::ifstream out(dir / "out.stp", std::ios::binary);
    out.seekg(-count, std::ios::end);
    std::string bytes(static_cast<std::size_t>(count), '\0');
    out.read(bytes.data(), count);
    return bytes;
  }

  TempDir dir;
  std::ofstream file;
};

/// What a product's tessellated shape consists of, but for a coordinates list #4.
constexpr std::string_view kPart =
    "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);\n"
    "#2=TESSELLATED_SHELL('',(#3),$);\n"
    "#3=COMPLEX_TRIANGULATED_FACE('',#4,4,(),$,(),((1,2,3,4)),());\n";

TEST_F(LargePrepare, TakesAListOfAGibibyteWithoutHoldingIt) {
  file << kPart << "#4=COORDINATES_LIST('',44739243,(";
  (void)fill("(0.125,-17.5,2.25E+02),", kGibibyte);
  file << "(1.,1.,1.)));\n";
  const Outcome outcome = prepare();
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("2 triangles"), std::string::npos) << outcome.out;
  EXPECT_LE(outcome.peakMemory, 64 * kMebibyte);
  EXPECT_GT(static_cast<std::int64_t>(std::filesystem::file_size(dir / "out.stp")), kGibibyte);
}

TEST_F(LargePrepare, TakesAnIndexMappingOfFortyMillionEntriesWithoutHoldingIt) {
  file << "#1=TESSELLATED_SHAPE_REPRESENTATION('',(#3),$);\n"
          "#4=COORDINATES_LIST('',4,((0.,0.,2.),(1.,0.,2.),(1.,1.,2.),(0.,1.,2.)));\n"
          "#3=COMPLEX_TRIANGULATED_FACE('',#4,40000001,(),$,(1";
  const std::int64_t entries = 1 + 4 * fill(",2,3,4,1", file.tellp() + std::int64_t{80'000'000});
  ASSERT_EQ(entries, 40'000'001);
  // By turns from both ends, so that the next entry is always far away: points 1, 4, 3, 2, 1, ...
  constexpr std::int64_t kIndices = 3'000'000;
  file << "),((1";
  for (std::int64_t i = 2; i <= kIndices; ++i) {
    file << ',' << (i % 2 == 0 ? entries + 1 - i : i);
  }
  file << ")),());\n";
  const Outcome outcome = prepare();
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  EXPECT_NE(outcome.out.find(" 2999998 triangles, 1 placements"), std::string::npos) << outcome.out;
  EXPECT_LE(outcome.peakMemory, 64 * kMebibyte);
}

TEST_F(LargePrepare, TakesAFileOfMoreThanFourGibibytes) {
  file << kPart << "#4=COORDINATES_LIST('',4,((0.,0.,2.),(1.,0.,2.),(1.,1.,2.),(0.,1.,2.)));\n";
  const std::string lines(200, 'x');
  std::int64_t instances = 4;
  std::string block;
  for (; file.tellp() < 4 * kGibibyte; block.clear()) {
    for (int i = 0; i < 1000; ++i) {
      block.append("#").append(std::to_string(++instances));
      block.append("=DESCRIPTIVE_REPRESENTATION_ITEM('").append(lines);
      block.append("','").append(lines).append("');\n");
    }
    file << block;
  }
  file << "#" << ++instances << "=CARTESIAN_POINT('the last',(1.,2.,3.));\n";
  const Outcome outcome = prepare();
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("Read " + std::to_string(instances) + " entities"), std::string::npos)
      << outcome.out;
  EXPECT_LE(outcome.peakMemory, 64 * kMebibyte + 32 * instances);
  EXPECT_GT(static_cast<std::int64_t>(std::filesystem::file_size(dir / "out.stp")), 4 * kGibibyte);
  EXPECT_NE(end(4096).find("=CARTESIAN_POINT('the last',(1.,2.,3.));\n"), std::string::npos);
}

}  // namespace
}  // namespace plenvorith::test
