#include "common/number.h"

#include <array>
#include <bit>
#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/reference/reference_number.h"
#include "tests/support/no_numbers.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::forEveryString;
using test::pick;
using test::ReferenceNumber;
using test::referenceNumber;
using testing::ThrowsMessage;

using namespace std::string_literals;

constexpr std::size_t kEnd = std::string::npos;

/// What may stand behind a number. Close to the end of the text, and where nothing of a list comes
/// next, numbers are read in another way than within a list.
constexpr std::array<std::string_view, 3> kBehind = {"", ",-12.5,0.),(1.25,-2.5E1,3.75),(4,5,6))",
                                                     "),(1.25,-2.5E1,3.75),(4,5,6),(7,8,9))"};

/// What may be readable behind the end of a text without being part of it.
constexpr std::array<std::string_view, 3> kReadable = {"1234567890123456789012345678901234567890",
                                                       ".5E1,123456789012345678901234567890",
                                                       "E-5)123456789012345678901234567890"};

/// Reads the number that a text begins with, from memory of just its size, so that a sanitizer sees
/// what is read behind its end.
ReferenceNumber readFrom(std::string_view text, double before = 0.0,
                         std::string_view readable = {}) {
  std::vector<char> characters(text.begin(), text.end());
  characters.insert(characters.end(), readable.begin(), readable.end());
  double value = before;
  const NumberResult result =
      readNumber(characters.data(), characters.data() + text.size(), value, readable.size());
  return {static_cast<std::size_t>(result.end - characters.data()), result.error, value};
}

double numberIn(std::string_view text, std::size_t expectedLength = kEnd) {
  double value = 0.0;
  std::set<std::uint64_t> values;
  for (const std::string_view behind : kBehind) {
    const std::string whole = std::string(text) + std::string(behind);
    const ReferenceNumber read = readFrom(whole);
    value = read.value;
    values.insert(std::bit_cast<std::uint64_t>(value));
    EXPECT_EQ(read.error, NumberError::None) << whole;
    EXPECT_EQ(read.length, expectedLength == kEnd ? text.size() : expectedLength) << whole;
  }
  EXPECT_EQ(values.size(), 1U) << text;
  return value;
}

void expectError(NumberError error, std::string_view text, std::size_t expectedLength) {
  for (const std::string_view behind : kBehind) {
    const std::string whole = std::string(text) + std::string(behind);
    const ReferenceNumber read = readFrom(whole, 0.5);
    EXPECT_EQ(read.error, error) << whole;
    EXPECT_EQ(read.length, expectedLength) << whole;
    EXPECT_EQ(read.value, 0.5) << whole;
  }
}

void expectNoNumberIn(std::string_view text, std::size_t expectedLength) {
  expectError(NumberError::NoNumber, text, expectedLength);
}

void expectOutOfRange(std::string_view text) {
  expectError(NumberError::OutOfRange, text, text.size());
}

TEST(ReadNumber, ReadsEveryShapeOfANumber) {
  EXPECT_EQ(numberIn("0"), 0.0);
  EXPECT_EQ(numberIn("12"), 12.0);
  EXPECT_EQ(numberIn("-12.5"), -12.5);
  EXPECT_EQ(numberIn("+12.5"), 12.5);
  EXPECT_EQ(numberIn("1."), 1.0);
  EXPECT_EQ(numberIn(".5"), 0.5);
  EXPECT_EQ(numberIn("-.5"), -0.5);
  EXPECT_EQ(numberIn("1.5E2"), 150.0);
  EXPECT_EQ(numberIn("1.5e+2"), 150.0);
  EXPECT_EQ(numberIn("150.E-2"), 1.5);
  EXPECT_EQ(numberIn("007"), 7.0);
}

TEST(ReadNumber, StopsBehindTheToken) {
  EXPECT_EQ(numberIn("1,2", 1), 1.0);
  EXPECT_EQ(numberIn("1.5.5", 3), 1.5);
  EXPECT_EQ(numberIn("1-2", 1), 1.0);
  EXPECT_EQ(numberIn("1E2E3", 3), 100.0);
  EXPECT_EQ(numberIn("1E2.5", 3), 100.0);
  EXPECT_EQ(numberIn("0x10", 1), 0.0);
  EXPECT_EQ(numberIn("1 2", 1), 1.0);
  EXPECT_EQ(numberIn("1\0002"s, 1), 1.0);
}

TEST(ReadNumber, StopsAtEveryByteThatIsNoPartOfIt) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    if (std::string_view("0123456789.Ee").find(c) == std::string_view::npos) {
      EXPECT_EQ(numberIn("12"s + c + "3456789", 2), 12.0) << byte;
      EXPECT_EQ(numberIn("1.25"s + c + "3456789", 4), 1.25) << byte;
    }
  }
}

TEST(ReadNumber, LeavesTheErrorNumberAsItWas) {
  errno = EDOM;
  const double value = readFrom("0E-999").value;
  const int after = errno;
  EXPECT_EQ(value, 0.0);
  EXPECT_EQ(after, EDOM);
}

TEST(ReadNumber, IsNotMisledByAnErrorNumberThatWasThereBefore) {
  errno = ERANGE;
  EXPECT_EQ(numberIn("+0."), 0.0);
  errno = 0;
}

TEST(ReadNumber, IgnoresADanglingExponent) {
  EXPECT_EQ(numberIn("1e"), 1.0);
  EXPECT_EQ(numberIn("1.E"), 1.0);
  EXPECT_EQ(numberIn("2.E+"), 2.0);
  EXPECT_EQ(numberIn("2.E-)", 4), 2.0);
  EXPECT_EQ(numberIn("2.E+-3", 4), 2.0);
}

TEST(ReadNumber, KeepsTheSignOfZero) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("-0.")), 0x8000000000000000U);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("0.")), 0U);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("-0E-999")), 0x8000000000000000U);
}

TEST(ReadNumber, RejectsATokenWithoutANumber) {
  for (const auto& [text, length] : test::kNoNumbers) {
    expectNoNumberIn(text, length);
  }
  expectNoNumberIn(" 1", 0);
}

TEST(ReadNumber, RejectsAnOverflow) {
  expectOutOfRange("1E400");
  expectOutOfRange("-1E400");
  expectOutOfRange("1.7976931348623159E308");
  expectOutOfRange("1E99999999999999999999");
  expectOutOfRange("1E18446744073709551617");  // 2^64 + 1
  expectOutOfRange("1" + std::string(400, '0'));
  EXPECT_EQ(numberIn("1.7976931348623157E308"), std::numeric_limits<double>::max());
  EXPECT_EQ(numberIn("1.7976931348623158E308"), std::numeric_limits<double>::max());
  EXPECT_EQ(numberIn("0E99999999999999999999"), 0.0);
}

TEST(ReadNumber, RejectsAnUnderflowThatLosesDigits) {
  expectOutOfRange("1E-400");
  expectOutOfRange("-1E-400");
  expectOutOfRange("4.9406564584124654E-324");
  expectOutOfRange("2.2250738585072011E-308");
  expectOutOfRange("1E-310");
  expectOutOfRange("1E-99999999999999999999");
  expectOutOfRange("1E-18446744073709551617");
  EXPECT_EQ(numberIn("2.2250738585072014E-308"), std::numeric_limits<double>::min());
}

TEST(ReadNumber, ReadsASubnormalThatIsExact) {
  // 2^-1074 and 2^-1023, written out in full.
  std::string digits =
      "4.940656458412465441765687928682213723650598026143247644255856825006755072702087518652998363"
      "6163599237979656469544571773092665671035593979639877479601078187812630071319031140452784581"
      "7167848982103688718636056998730723050006387409153564984387312473397273169615140031715385398"
      "0741262385655911710266585566867681870395603106249319452715914924553293054565444011274801297"
      "0999954193198940908041656332452475714786901472678015935523861155013480352649347201937902681"
      "0710749170333222684475333572083243193609238289345836806010601150616980975307834227731832924"
      "7904982524730776375927247874656084778203734469699533647017972677717585125660551199131504891"
      "1014510378627381672509558373897335989936648099411642057026370902792427675445652290875386825"
      "06419718265533447265625E-324";
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn(digits)), 1U);
  digits.insert(digits.find('E'), "1");
  expectOutOfRange(digits);
}

TEST(ReadNumber, RoundsToTheNearestAndHalfWayCasesToEven) {
  EXPECT_EQ(numberIn("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(numberIn("9007199254740993.0000000000000000000000001"), 9007199254740994.0);
  EXPECT_EQ(numberIn("9007199254740995"), 9007199254740996.0);
  EXPECT_EQ(numberIn("9007199254740993E1"), 90071992547409936.0);
  EXPECT_EQ(numberIn("9007199254740992E1"), 90071992547409920.0);
  EXPECT_EQ(numberIn("3E23"), 0x1.fc3842bd1f072p+77);
  EXPECT_EQ(numberIn("1E-23"), 0x1.82db34012b251p-77);
  EXPECT_EQ(numberIn("0.1"), 0x1.999999999999ap-4);
  EXPECT_EQ(numberIn("0.1000000000000000055511151231257827021181583404541015625"), 0.1);
  EXPECT_EQ(numberIn("123456789012345678901234567890"), 0x1.8ee90ff6c373ep+96);
  EXPECT_EQ(numberIn("0." + std::string(400, '0') + "1E401"), 1.0);
  EXPECT_EQ(numberIn("1" + std::string(400, '0') + "E-400"), 1.0);
}

/// A comma for the decimal point, as in German.
class CommaPoint : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override {
    return ',';
  }
};

TEST(ReadNumber, DoesNotDependOnTheLocaleOfTheStreams) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
  EXPECT_EQ(numberIn("1.5"), 1.5);
  EXPECT_EQ(numberIn("1,5", 1), 1.0);
  std::locale::global(before);
}

/// Sets the C library's locale until the end of the scope.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name)
      : before_(setlocale(LC_ALL, nullptr)), isSet_(setlocale(LC_ALL, name) != nullptr) {}
  ~ScopedLocale() {
    setlocale(LC_ALL, before_.c_str());
  }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

  bool isSet() const {
    return isSet_;
  }

 private:
  std::string before_;
  bool isSet_;
};

void expectPointNumbers() {
  EXPECT_EQ(numberIn("1.5"), 1.5);
  EXPECT_EQ(numberIn("1,5", 1), 1.0);
  EXPECT_EQ(numberIn("-2.25E1"), -22.5);
  expectOutOfRange("1.5E400");
  expectOutOfRange("1.5E-320");
}

TEST(ReadNumber, DoesNotDependOnTheLocaleOfTheEnvironment) {
  const ScopedLocale locale("");
  expectPointNumbers();
}

TEST(ReadNumber, DoesNotDependOnALocaleWithADecimalComma) {
  for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "ru_RU.UTF-8"}) {
    const ScopedLocale locale(name);
    if (locale.isSet() && localeconv()->decimal_point == ","s) {
      expectPointNumbers();
      return;
    }
  }
  GTEST_SKIP() << "no locale with a decimal comma is installed";
}

TEST(ThrowNumberError, ThrowsWhatTheStandardConversionThrows) {
  EXPECT_THAT([] { throwNumberError(NumberError::NoNumber); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_THAT([] { throwNumberError(NumberError::OutOfRange); },
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
}

void expectSame(const ReferenceNumber& actual, const ReferenceNumber& expected,
                std::string_view text) {
  ASSERT_EQ(actual.length, expected.length) << text;
  ASSERT_EQ(actual.error, expected.error) << text;
  ASSERT_EQ(std::bit_cast<std::uint64_t>(actual.value),
            std::bit_cast<std::uint64_t>(expected.value))
      << text;
}

/// Expects that a number is read as its reference reads it, at the end of a text, whatever may be
/// read behind that, and in front of other numbers.
void expectSameNumber(std::string_view text) {
  for (const std::string_view behind : kBehind) {
    const std::string whole = std::string(text) + std::string(behind);
    expectSame(readFrom(whole), referenceNumber(whole), whole);
  }
  const ReferenceNumber expected = referenceNumber(text);
  for (const std::string_view readable : kReadable) {
    expectSame(readFrom(text, 0.0, readable), expected, text);
  }
}

std::string digits(std::mt19937& random, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += static_cast<char>('0' + pick(random, 10));
  }
  return text;
}

/// An exponent near an end of the range, or any other.
std::string exponent(std::mt19937& random) {
  constexpr std::array<int, 8> kCentres = {0, 0, 22, -22, 308, -308, -324, -290};
  const int centre = kCentres[pick(random, kCentres.size())];
  return std::to_string(centre + static_cast<int>(pick(random, 41)) - 20);
}

/// A token of any shape that the scanner takes as one, with a few bytes behind it at times.
std::string token(std::mt19937& random) {
  const std::vector<std::string> signs = {"", "", "-", "+"};
  std::string text = signs[pick(random, signs.size())];
  const std::size_t longest = pick(random, 20) == 0 ? 60 : 12;
  text += digits(random, pick(random, longest));
  if (pick(random, 3) != 0) {
    text += "." + std::string(pick(random, 4) == 0 ? pick(random, longest) : 0, '0') +
            digits(random, pick(random, longest));
  }
  if (pick(random, 2) == 0) {
    text += pick(random, 2) == 0 ? "E" : "e";
    text += pick(random, 8) == 0 ? signs[pick(random, signs.size())] : exponent(random);
  }
  if (pick(random, 8) == 0) {
    const std::vector<std::string> behind = {",", ")", "E5", ".5", "-1", "x1", " 1", "\xFF"};
    text += behind[pick(random, behind.size())];
  }
  return text;
}

/// A double of any magnitude, in scientific notation with 17 digits or all of them.
std::string printedDouble(std::mt19937& random) {
  const std::uint64_t bits = (std::uint64_t{random()} << 32U) | random();
  std::array<char, 1200> text{};
  const double value = pick(random, 4) == 0 ? std::bit_cast<double>(bits & 0x801F'FFFF'FFFF'FFFFU)
                                            : std::bit_cast<double>(bits);
  const int length =
      std::snprintf(text.data(), text.size(), pick(random, 4) == 0 ? "%.17g" : "%.800e", value);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

/// The exact decimal digits half way between two neighbouring doubles, or right beside that.
std::string halfWay(std::mt19937& random) {
  const std::uint64_t mantissa = ((std::uint64_t{random()} << 32U | random()) >> 11U) | 1U << 20U;
  // One bit more than a double holds, set: half way. long double holds 64 bits.
  const long double value = std::ldexp(static_cast<long double>(mantissa * 2 + 1),
                                       static_cast<int>(pick(random, 200)) - 120);
  std::array<char, 1200> text{};
  const int length = std::snprintf(text.data(), text.size(), "%.250Lf", value);
  std::string number(text.data(), static_cast<std::size_t>(length));
  if (pick(random, 3) == 0) {
    number += "1";
  }
  return number;
}

TEST(ReadNumberAgainstReference, AgreesOnEveryShortToken) {
  forEveryString({"-", "+", "0", "7", ".", "E", ")"}, 6,
                 [](const std::string& text) { expectSameNumber(text); });
}

TEST(ReadNumberAgainstReference, AgreesOnEveryByteAtEveryPlace) {
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t length = 1; length <= 18; ++length) {
      for (std::size_t place = 0; place < length; ++place) {
        std::string text = std::string("123456789.98765432").substr(0, length);
        text[place] = static_cast<char>(byte);
        expectSameNumber(text);
      }
    }
  }
}

TEST(ReadNumberAgainstReference, AgreesOnRandomTokens) {
  std::mt19937 random(4);
  for (int i = 0; i < test::rounds(3'000'000); ++i) {
    expectSameNumber(token(random));
  }
}

TEST(ReadNumberAgainstReference, AgreesOnDoublesOfEveryMagnitude) {
  std::mt19937 random(5);
  for (int i = 0; i < test::rounds(100'000); ++i) {
    expectSameNumber(printedDouble(random));
  }
}

TEST(ReadNumberAgainstReference, AgreesOnHalfWayCases) {
  std::mt19937 random(6);
  for (int i = 0; i < test::rounds(100'000); ++i) {
    expectSameNumber(halfWay(random));
  }
}

TEST(ReadNumberAgainstReference, AgreesAtTheEndsOfTheRange) {
  const std::vector<std::string> numbers = {
      "1.7976931348623157E308",
      "1."
      "7976931348623158079372897140530341507993413271003782693617377898044496829276475094664901797"
      "75872070963302864166928879109465555478519404026306574886715058206819089020007083836762738548"
      "4"
      "58177115317644757302700698555713669596228429148198608349364752927190741684443655107043427115"
      "5"
      "96936",
      "2.2250738585072014E-308",
      "2.2250738585072013E-308",
      "2.2250738585072012E-308",
      "2.2250738585072011E-308",
      "4.9406564584124654E-324",
      "2.4703282292062327E-324",
      "2.4703282292062328E-324",
      "7.4109846876186981E-324"};
  for (const std::string& number : numbers) {
    const std::size_t e = number.find('E') == std::string::npos ? number.size() : number.find('E');
    const std::string exponentPart = e == number.size() ? "E308" : number.substr(e);
    for (std::size_t length = 1; length <= e; ++length) {
      for (char digit = '0'; digit <= '9'; ++digit) {
        expectSameNumber(number.substr(0, length) + exponentPart);
        expectSameNumber(number.substr(0, length) + digit + exponentPart);
        expectSameNumber("-" + number.substr(0, length) + digit + "0000001" + exponentPart);
      }
    }
  }
}

}  // namespace
}  // namespace plenvorith
