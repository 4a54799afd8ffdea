#include "prepare/output_file.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;
using test::TempDir;

TEST(OutputFile, WritesWhatIsPut) {
  const TempDir directory;
  OutputFile file(directory / "out");
  ASSERT_TRUE(file.isOpen());
  file.put('#');
  file.put(std::uint64_t{18'446'744'073'709'551'615U});
  file.put("=A(");
  std::memcpy(file.room(3), "1.)", 3);
  file.used(2);
  file.put("");
  file.put(");\n");
  EXPECT_TRUE(file.close());
  EXPECT_EQ(readFile(directory / "out"), "#18446744073709551615=A(1.);\n");
}

TEST(OutputFile, WritesAnyAmount) {
  const TempDir directory;
  OutputFile file(directory / "out");
  std::string expected;
  for (const std::size_t size : {1U, 4'096U, 262'143U, 262'144U, 262'145U, 1'000'000U, 3U}) {
    const std::string text(size, static_cast<char>('a' + size % 26));
    file.put(text);
    file.put(std::uint64_t{size});
    file.put('\n');
    expected += text + std::to_string(size) + '\n';
  }
  EXPECT_TRUE(file.isGood());
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(readFile(directory / "out") == expected);
}

TEST(OutputFile, RejectsAFileThatIsThereAlready) {
  const TempDir directory;
  const std::string path = test::writeFile(directory / "out", "old");
  OutputFile file(path);
  EXPECT_FALSE(file.isOpen());
  EXPECT_FALSE(file.isGood());
  EXPECT_FALSE(file.close());
  EXPECT_EQ(readFile(path), "old");
}

TEST(OutputFile, CanBeClosedOnce) {
  const TempDir directory;
  OutputFile file(directory / "out");
  EXPECT_TRUE(file.close());
  EXPECT_FALSE(file.close());
}

std::string real(double value) {
  std::array<char, 32> text{};
  return {text.data(), writeReal(text.data(), value)};
}

TEST(WriteReal, HasAPoint) {
  EXPECT_EQ(real(0.0), "0.");
  EXPECT_EQ(real(-0.0), "-0.");
  EXPECT_EQ(real(1.0), "1.");
  EXPECT_EQ(real(-25.4), "-25.4");
  EXPECT_EQ(real(0.1), "0.1");
  EXPECT_EQ(real(123456.0), "123456.");
}

TEST(WriteReal, HasAnExponentAsTheStandardWantsIt) {
  EXPECT_EQ(real(1e-7), "1.E-7");
  EXPECT_EQ(real(-2.5e-7), "-2.5E-7");
  EXPECT_EQ(real(1e20), "1.E20");
  EXPECT_EQ(real(1.5e100), "1.5E100");
  EXPECT_EQ(real(1e-300), "1.E-300");
}

TEST(WriteReal, IsShortAndReadsAsTheSameNumber) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100'000; ++i) {
    const std::uint64_t bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) {
      continue;
    }
    const std::string text = real(value);
    EXPECT_NE(text.find('.'), std::string::npos) << text;
    double again = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), again);
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    EXPECT_EQ(again, value) << text;
  }
  EXPECT_LE(real(-std::numeric_limits<double>::denorm_min()).size(), 32U);
  EXPECT_LE(real(-2.2250738585072014e-308).size(), 32U);
}

}  // namespace
}  // namespace plenvorith
