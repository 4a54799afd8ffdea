#include "common/short_number.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

/// The number at the start of a text whose token this is, and nothing if it is not a short one.
std::optional<double> shortNumber(const std::string& token) {
  const std::string text = token + "," + std::string(shortnumber::kLongest, '7');
  double value = 0.0;
  const char* const end = shortnumber::read(text.data(), text.data() + text.size(), 0, value);
  if (end == nullptr) {
    return std::nullopt;
  }
  EXPECT_EQ(end - text.data(), static_cast<std::ptrdiff_t>(token.size())) << token;
  return value;
}

TEST(ShortNumber, ReadsWholePartFractionAndExponent) {
  EXPECT_EQ(shortNumber("7"), 7.0);
  EXPECT_EQ(shortNumber("1234567"), 1234567.0);
  EXPECT_EQ(shortNumber("-123456."), -123456.0);
  EXPECT_EQ(shortNumber("0.5"), 0.5);
  EXPECT_EQ(shortNumber("-12.25"), -12.25);
  EXPECT_EQ(shortNumber("1.12345678"), 1.12345678);
  EXPECT_EQ(shortNumber("1.123456789012345"), 1.123456789012345);
  EXPECT_EQ(shortNumber("2.5E3"), 2500.0);
  EXPECT_EQ(shortNumber("2.5e+3"), 2500.0);
  EXPECT_EQ(shortNumber("2.5E-3"), 0.0025);
  EXPECT_EQ(shortNumber("25E1"), 250.0);
  EXPECT_EQ(shortNumber("1.E22"), 1e22);
  EXPECT_EQ(shortNumber("1.E-22"), 1e-22);
  EXPECT_EQ(shortNumber("1.E"), 1.0);
}

TEST(ShortNumber, KeepsTheSignOfZero) {
  const std::optional<double> zero = shortNumber("-0.");
  ASSERT_TRUE(zero);
  EXPECT_EQ(*zero, 0.0);
  EXPECT_TRUE(std::signbit(*zero));
  EXPECT_FALSE(std::signbit(shortNumber("0.").value_or(-1.0)));
}

TEST(ShortNumber, ReadsTheLargestWholeMantissaThatIsExact) {
  EXPECT_EQ(shortNumber("9.007199254740992"), 9.007199254740992);
  EXPECT_FALSE(shortNumber("9.007199254740993"));
}

TEST(ShortNumber, LeavesOthersToTheLongWay) {
  for (const char* const token :
       {"", "-", "+1", ".5", "-.5", "12345678", "-1234567", "1.1234567890123456", "1.E23", "1.E-23",
        "1.5E-22", "1.E12345678", "9999999.999999999999999", "--1", "A"}) {
    EXPECT_FALSE(shortNumber(token)) << token;
  }
}

// The memory ends where no more may be looked at, so that a sanitizer sees a byte too many.
TEST(ShortNumber, LooksAtNoMoreThanMayBeRead) {
  constexpr std::size_t kLongest = shortnumber::kLongest;
  std::vector<char> text(kLongest, '0');
  const std::string_view longest = "-123456.12345678901234E+1234567";
  std::copy(longest.begin(), longest.end(), text.begin());
  double value = 0.0;
  (void)shortnumber::read(text.data(), text.data() + kLongest, 0, value);
  const std::string_view token = "1.5,";
  std::copy(token.begin(), token.end(), text.begin());
  EXPECT_EQ(shortnumber::read(text.data(), text.data() + 4, kLongest - 4, value), text.data() + 3);
  EXPECT_EQ(value, 1.5);
  EXPECT_EQ(shortnumber::read(text.data(), text.data() + 4, kLongest - 5, value), nullptr);
}

TEST(ShortNumber, RejectsATokenThatEndsBehindTheText) {
  const std::string text = "1234," + std::string(shortnumber::kLongest, ' ');
  double value = 0.0;
  EXPECT_EQ(shortnumber::read(text.data(), text.data() + 3, text.size() - 3, value), nullptr);
  EXPECT_EQ(shortnumber::read(text.data(), text.data() + 4, text.size() - 4, value),
            text.data() + 4);
}

}  // namespace
}  // namespace plenvorith
