#include "tessellation/step_cursor.h"

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

#include "tests/reference/reference_step_cursor.h"
#include "tests/support/outcome.h"
#include "tests/support/records.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::forEveryString;
using test::Outcome;
using test::outcomeOf;
using test::pick;
using test::randomText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

using namespace std::string_literals;

constexpr std::size_t kEnd = std::string::npos;

/// What may stand behind a number. Close to the end of the text, and where nothing of a list comes
/// next, numbers are read in another way than within a list.
constexpr std::array<std::string_view, 3> kBehind = {"", ",-12.5,0.),(1.25,-2.5E1,3.75),(4,5,6))",
                                                     "),(1.25,-2.5E1,3.75),(4,5,6),(7,8,9))"};

double numberIn(std::string_view text, std::size_t expectedPos = kEnd) {
  double value = 0.0;
  std::set<std::uint64_t> values;
  for (const std::string_view behind : kBehind) {
    const std::string whole = std::string(text) + std::string(behind);
    StepCursor cursor{whole};
    value = parseNumber(cursor);
    values.insert(std::bit_cast<std::uint64_t>(value));
    EXPECT_EQ(cursor.pos, expectedPos == kEnd ? text.size() : expectedPos) << whole;
  }
  EXPECT_EQ(values.size(), 1U) << text;
  return value;
}

template <typename Exception>
void expectError(std::string_view text, std::size_t expectedPos, const char* message) {
  for (const std::string_view behind : kBehind) {
    const std::string whole = std::string(text) + std::string(behind);
    StepCursor cursor{whole};
    EXPECT_THAT([&] { parseNumber(cursor); }, ThrowsMessage<Exception>(message)) << whole;
    EXPECT_EQ(cursor.pos, expectedPos) << whole;
  }
}

void expectNoNumberIn(std::string_view text, std::size_t expectedPos) {
  expectError<std::invalid_argument>(text, expectedPos, "invalid stod argument");
}

void expectOutOfRange(std::string_view text) {
  expectError<std::out_of_range>(text, text.size(), "stod argument out of range");
}

std::vector<Point3> pointsIn(std::string_view text, std::size_t expectedPos = kEnd) {
  StepCursor cursor{text};
  std::vector<Point3> points = parsePointList(cursor);
  EXPECT_EQ(cursor.pos, expectedPos == kEnd ? text.size() : expectedPos) << text;
  return points;
}

std::vector<IndexTriple> triplesIn(std::string_view text, std::size_t expectedPos = kEnd) {
  StepCursor cursor{text};
  std::vector<IndexTriple> triples = parseIndexTriples(cursor);
  EXPECT_EQ(cursor.pos, expectedPos == kEnd ? text.size() : expectedPos) << text;
  return triples;
}

std::size_t posAfterString(std::string_view text, std::size_t start = 0) {
  StepCursor cursor{text, start};
  skipQuotedString(cursor);
  return cursor.pos;
}

std::size_t posAfterGroup(std::string_view text, std::size_t start = 0) {
  StepCursor cursor{text, start};
  skipParenthesisedGroup(cursor);
  return cursor.pos;
}

TEST(SkipWhitespace, SkipsSpacesTabsCarriageReturnsAndLineFeedsOnly) {
  StepCursor cursor{" \t\r\n,"};
  skipWhitespace(cursor);
  EXPECT_EQ(cursor.pos, 4U);
  for (const std::string_view text : {"\f", "\v", "\xA0", "\x85", "x"}) {
    StepCursor other{text};
    skipWhitespace(other);
    EXPECT_EQ(other.pos, 0U) << text;
  }
  StepCursor nul{std::string_view("\0", 1)};
  skipWhitespace(nul);
  EXPECT_EQ(nul.pos, 0U);
}

TEST(SkipWhitespace, StopsAtTheEnd) {
  StepCursor cursor{"  "};
  skipWhitespace(cursor);
  EXPECT_EQ(cursor.pos, 2U);
  skipWhitespace(cursor);
  EXPECT_EQ(cursor.pos, 2U);
}

TEST(NextIs, LooksBehindBlanks) {
  StepCursor cursor{" \n(x"};
  EXPECT_FALSE(nextIs(cursor, ')'));
  EXPECT_TRUE(nextIs(cursor, '('));
  EXPECT_EQ(cursor.pos, 2U);
}

TEST(NextIs, IsFalseAtAndBehindTheEnd) {
  StepCursor end{"(", 1};
  EXPECT_FALSE(nextIs(end, '('));
  StepCursor behind{"(", 2};
  EXPECT_FALSE(nextIs(behind, '('));
  EXPECT_FALSE(nextIs(behind, '\0'));
  EXPECT_EQ(behind.pos, 2U);
}

TEST(ConsumeIf, TakesTheCharacterBehindBlanks) {
  StepCursor cursor{"\r\n , ,"};
  consumeIf(cursor, ',');
  EXPECT_EQ(cursor.pos, 4U);
  consumeIf(cursor, ',');
  EXPECT_EQ(cursor.pos, 6U);
  consumeIf(cursor, ',');
  EXPECT_EQ(cursor.pos, 6U);
}

TEST(ConsumeIf, LeavesAnotherCharacterButNotTheBlanks) {
  StepCursor cursor{"  )"};
  consumeIf(cursor, ',');
  EXPECT_EQ(cursor.pos, 2U);
}

TEST(ParseNumber, ReadsEveryShapeOfANumber) {
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
  EXPECT_EQ(numberIn(" \t\r\n3"), 3.0);
}

TEST(ParseNumber, StopsBehindTheToken) {
  EXPECT_EQ(numberIn("1,2", 1), 1.0);
  EXPECT_EQ(numberIn("1.5.5", 3), 1.5);
  EXPECT_EQ(numberIn("1-2", 1), 1.0);
  EXPECT_EQ(numberIn("1E2E3", 3), 100.0);
  EXPECT_EQ(numberIn("1E2.5", 3), 100.0);
  EXPECT_EQ(numberIn("0x10", 1), 0.0);
  EXPECT_EQ(numberIn("1 2", 1), 1.0);
  EXPECT_EQ(numberIn("1\0002"s, 1), 1.0);
}

TEST(ParseNumber, StopsAtEveryByteThatIsNoPartOfIt) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    if (std::string_view("0123456789.Ee").find(c) == std::string_view::npos) {
      EXPECT_EQ(numberIn("12"s + c + "3456789", 2), 12.0) << byte;
      EXPECT_EQ(numberIn("1.25"s + c + "3456789", 4), 1.25) << byte;
    }
  }
}

TEST(ParseNumber, LeavesTheErrorNumberAsItWas) {
  errno = EDOM;
  StepCursor cursor{"0E-999"};
  const double value = parseNumber(cursor);
  const int after = errno;
  EXPECT_EQ(value, 0.0);
  EXPECT_EQ(after, EDOM);
}

TEST(ParseNumber, IgnoresADanglingExponent) {
  EXPECT_EQ(numberIn("1e"), 1.0);
  EXPECT_EQ(numberIn("1.E"), 1.0);
  EXPECT_EQ(numberIn("2.E+"), 2.0);
  EXPECT_EQ(numberIn("2.E-)", 4), 2.0);
  EXPECT_EQ(numberIn("2.E+-3", 4), 2.0);
}

TEST(ParseNumber, KeepsTheSignOfZero) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("-0.")), 0x8000000000000000U);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("0.")), 0U);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(numberIn("-0E-999")), 0x8000000000000000U);
}

TEST(ParseNumber, RejectsATokenWithoutANumber) {
  expectNoNumberIn("", 0);
  expectNoNumberIn("  ", 2);
  expectNoNumberIn(")", 0);
  expectNoNumberIn(" ,", 1);
  expectNoNumberIn("$", 0);
  expectNoNumberIn("#1", 0);
  expectNoNumberIn("A", 0);
  expectNoNumberIn("-", 1);
  expectNoNumberIn("+", 1);
  expectNoNumberIn("+-1", 1);
  expectNoNumberIn(".", 1);
  expectNoNumberIn("-.E5", 4);
  expectNoNumberIn("E5", 2);
  expectNoNumberIn("-e+5,", 4);
  expectNoNumberIn(".T.", 1);
  expectNoNumberIn("inf", 0);
  expectNoNumberIn("nan", 0);
  expectNoNumberIn("-inf", 1);
  expectNoNumberIn("\f1", 0);
}

TEST(ParseNumber, RejectsANumberBehindTheEnd) {
  StepCursor cursor{"1", 2};
  EXPECT_THAT([&] { parseNumber(cursor); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_EQ(cursor.pos, 2U);
}

TEST(ParseNumber, RejectsAnOverflow) {
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

TEST(ParseNumber, RejectsAnUnderflowThatLosesDigits) {
  expectOutOfRange("1E-400");
  expectOutOfRange("-1E-400");
  expectOutOfRange("4.9406564584124654E-324");
  expectOutOfRange("2.2250738585072011E-308");
  expectOutOfRange("1E-310");
  expectOutOfRange("1E-99999999999999999999");
  expectOutOfRange("1E-18446744073709551617");
  EXPECT_EQ(numberIn("2.2250738585072014E-308"), std::numeric_limits<double>::min());
}

TEST(ParseNumber, ReadsASubnormalThatIsExact) {
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

TEST(ParseNumber, RoundsToTheNearestAndHalfWayCasesToEven) {
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

TEST(ParseNumber, DoesNotDependOnTheLocaleOfTheStreams) {
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

TEST(ParseNumber, DoesNotDependOnTheLocaleOfTheEnvironment) {
  const ScopedLocale locale("");
  expectPointNumbers();
}

TEST(ParseNumber, DoesNotDependOnALocaleWithADecimalComma) {
  for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "ru_RU.UTF-8"}) {
    const ScopedLocale locale(name);
    if (locale.isSet() && localeconv()->decimal_point == ","s) {
      expectPointNumbers();
      return;
    }
  }
  GTEST_SKIP() << "no locale with a decimal comma is installed";
}

TEST(ParseReference, ReadsNumberSignAndDigits) {
  StepCursor cursor{" #123,"};
  EXPECT_EQ(parseReference(cursor), "#123");
  EXPECT_EQ(cursor.pos, 5U);
  StepCursor zeros{"#0012A"};
  EXPECT_EQ(parseReference(zeros), "#0012");
  EXPECT_EQ(zeros.pos, 5U);
  StepCursor alone{"#"};
  EXPECT_EQ(parseReference(alone), "#");
  EXPECT_EQ(alone.pos, 1U);
  StepCursor twice{"##1"};
  EXPECT_EQ(parseReference(twice), "#");
  EXPECT_EQ(twice.pos, 1U);
}

TEST(ParseReference, IsEmptyWhereSomethingElseComesNext) {
  StepCursor dollar{"  $"};
  EXPECT_EQ(parseReference(dollar), "");
  EXPECT_EQ(dollar.pos, 2U);
  StepCursor end{""};
  EXPECT_EQ(parseReference(end), "");
  EXPECT_EQ(end.pos, 0U);
}

TEST(SkipQuotedString, EndsBehindTheNextApostrophe) {
  EXPECT_EQ(posAfterString("'a(b'"), 5U);
  EXPECT_EQ(posAfterString(" \n'ab',"), 6U);
  EXPECT_EQ(posAfterString("''"), 2U);
  EXPECT_EQ(posAfterString("'a\0b'x"s), 5U);
}

TEST(SkipQuotedString, DoesNotKnowDoubledApostrophes) {
  EXPECT_EQ(posAfterString("'it''s'"), 4U);
}

TEST(SkipQuotedString, EndsAtTheEndOfTheTextWithoutASecondApostrophe) {
  EXPECT_EQ(posAfterString("'abc"), 4U);
  EXPECT_EQ(posAfterString("'"), 1U);
}

TEST(SkipQuotedString, SkipsOnlyBlanksWhereNoStringComesNext) {
  EXPECT_EQ(posAfterString("  $,'a'"), 2U);
  EXPECT_EQ(posAfterString(""), 0U);
}

TEST(SkipParenthesisedGroup, EndsBehindItsClosingParenthesis) {
  EXPECT_EQ(posAfterGroup("()"), 2U);
  EXPECT_EQ(posAfterGroup("(1,(2,3),())x"), 12U);
  EXPECT_EQ(posAfterGroup("x(1)y", 1), 4U);
  EXPECT_EQ(posAfterGroup("())"), 2U);
}

TEST(SkipParenthesisedGroup, DoesNotCountParenthesesInStrings) {
  EXPECT_EQ(posAfterGroup("('a(b')x"), 7U);
  EXPECT_EQ(posAfterGroup("('a)b')x"), 7U);
  EXPECT_EQ(posAfterGroup("('a'')')x"), 8U);
}

TEST(SkipParenthesisedGroup, EndsAtTheEndOfTheTextIfItNeverCloses) {
  EXPECT_EQ(posAfterGroup("("), 1U);
  EXPECT_EQ(posAfterGroup("((1,2)"), 6U);
  EXPECT_EQ(posAfterGroup("('a)'"), 5U);
}

TEST(SkipParenthesisedGroup, EndsOneBehindTheEndInAStringThatNeverEnds) {
  EXPECT_EQ(posAfterGroup("('a)"), 5U);
  EXPECT_EQ(posAfterGroup("('"), 3U);
}

TEST(ParsePointList, ReadsPoints) {
  EXPECT_THAT(pointsIn("((0,0,0),(1,0,0),(0,1,0))"),
              ElementsAre(Point3{0, 0, 0}, Point3{1, 0, 0}, Point3{0, 1, 0}));
  EXPECT_THAT(pointsIn("((1.5,-2.,3E1))"), ElementsAre(Point3{1.5, -2, 30}));
}

TEST(ParsePointList, AllowsBlanksBetweenAllItems) {
  EXPECT_THAT(pointsIn("( ( 0 , 0 , 0 ) )"), ElementsAre(Point3{}));
  EXPECT_THAT(pointsIn("\r\n(\t( 1\r\n,\t2 ,3\n)\n, (4,5,6)\r\n )"),
              ElementsAre(Point3{1, 2, 3}, Point3{4, 5, 6}));
}

TEST(ParsePointList, IsEmptyForOneLevelOfParentheses) {
  EXPECT_THAT(pointsIn("(0,0,0),(1,0,0)", 1), IsEmpty());
}

TEST(ParsePointList, IsEmptyForEmptyParenthesesAndOtherThings) {
  EXPECT_THAT(pointsIn("()"), IsEmpty());
  EXPECT_THAT(pointsIn("( )x", 3), IsEmpty());
  EXPECT_THAT(pointsIn(" $", 1), IsEmpty());
  EXPECT_THAT(pointsIn(""), IsEmpty());
  EXPECT_THAT(pointsIn(" )x", 2), IsEmpty());
}

TEST(ParsePointList, ToleratesMissingSeparators) {
  EXPECT_THAT(pointsIn("((1 2 3)(4 5 6"), ElementsAre(Point3{1, 2, 3}, Point3{4, 5, 6}));
  EXPECT_THAT(pointsIn("((1-2+3)"), ElementsAre(Point3{1, -2, 3}));
  EXPECT_THAT(pointsIn("((1,2,3),)"), ElementsAre(Point3{1, 2, 3}));
}

TEST(ParsePointList, EndsAtAnInnerListOfMoreThanThree) {
  EXPECT_THAT(pointsIn("((1,2,3),(4,5,6,7),(8,9,10))", 16),
              ElementsAre(Point3{1, 2, 3}, Point3{4, 5, 6}));
}

TEST(ParsePointList, RejectsAnInnerListOfFewerThanThree) {
  StepCursor cursor{"((1,2,3),(1,2))"};
  EXPECT_THAT([&] { parsePointList(cursor); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_EQ(cursor.pos, 13U);
}

TEST(ParsePointList, RejectsANumberOutOfRange) {
  StepCursor cursor{"((1,1E400,3))"};
  EXPECT_THAT([&] { parsePointList(cursor); },
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
  EXPECT_EQ(cursor.pos, 9U);
}

TEST(ParseIndexTriples, ReadsTriples) {
  EXPECT_THAT(triplesIn("((1,2,3),(1,3,4))"),
              ElementsAre(IndexTriple{1, 2, 3}, IndexTriple{1, 3, 4}));
  EXPECT_THAT(triplesIn("\n( ( 1 , 2\r\n, 3 ) , )"), ElementsAre(IndexTriple{1, 2, 3}));
}

TEST(ParseIndexTriples, IsEmptyForEmptyParentheses) {
  EXPECT_THAT(triplesIn("()"), IsEmpty());
  EXPECT_THAT(triplesIn(" ( ),()", 4), IsEmpty());
}

TEST(ParseIndexTriples, RequiresTheOuterParenthesis) {
  EXPECT_THAT(triplesIn("$", 0), IsEmpty());
  EXPECT_THAT(triplesIn("  $", 2), IsEmpty());
  EXPECT_THAT(triplesIn(" )", 1), IsEmpty());
  EXPECT_THAT(triplesIn(""), IsEmpty());
  EXPECT_THAT(triplesIn("(1,2,3)", 1), IsEmpty());
}

TEST(ParseIndexTriples, EndsAtAnInnerListOfMoreThanThree) {
  constexpr std::string_view kText = "((1,2,3),(4,5,6,7),(8,9,10))";
  EXPECT_THAT(triplesIn(kText, 16), ElementsAre(IndexTriple{1, 2, 3}, IndexTriple{4, 5, 6}));
  EXPECT_EQ(kText[16], '7');
}

TEST(ParseIndexTriples, RejectsAnInnerListOfFewerThanThree) {
  for (const std::string_view text : {"((1,2))", "((1))", "(())"}) {
    StepCursor cursor{text};
    EXPECT_THAT([&] { parseIndexTriples(cursor); },
                ThrowsMessage<std::invalid_argument>("invalid stod argument"))
        << text;
    EXPECT_EQ(text[cursor.pos], ')') << text;
  }
}

TEST(ParseIndexTriples, RejectsANumberOutOfRange) {
  StepCursor cursor{"((1,2,1E400))"};
  EXPECT_THAT([&] { parseIndexTriples(cursor); },
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
  EXPECT_EQ(cursor.pos, 11U);
}

TEST(ParseIndexTriples, TruncatesTowardZero) {
  EXPECT_THAT(triplesIn("((1.9,-2.9,3E0))"), ElementsAre(IndexTriple{1, -2, 3}));
  EXPECT_THAT(triplesIn("((0.99,-0.99,-0))"), ElementsAre(IndexTriple{0, 0, 0}));
}

TEST(ParseIndexTriples, GivesTheLeastIntegerForWhatDoesNotFit) {
  constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();
  EXPECT_THAT(triplesIn("((2147483647,2147483647.9,2147483648))"),
              ElementsAre(IndexTriple{kGreatest, kGreatest, kLeast}));
  EXPECT_THAT(triplesIn("((-2147483647.9,-2147483648,-2147483648.9))"),
              ElementsAre(IndexTriple{-kGreatest, kLeast, kLeast}));
  EXPECT_THAT(triplesIn("((-2147483649,1e300,-1e300))"),
              ElementsAre(IndexTriple{kLeast, kLeast, kLeast}));
  EXPECT_THAT(triplesIn("((4294967297,9223372036854775809,18446744073709551617))"),
              ElementsAre(IndexTriple{kLeast, kLeast, kLeast}));
}

/// Expects that an operation and its reference agree in result, exception and cursor.
template <typename Operation, typename Reference>
void expectSame(std::string_view text, std::size_t start, Operation operation,
                Reference reference) {
  // Memory of just this size, so that a sanitizer sees what is read behind its end.
  const std::vector<char> characters(text.begin(), text.end());
  StepCursor cursor{{characters.data(), characters.size()}, start};
  StepCursor referenceCursor{text, start};
  const Outcome expected = outcomeOf([&] { return reference(referenceCursor); });
  const Outcome actual = outcomeOf([&] { return operation(cursor); });
  ASSERT_EQ(actual, expected) << "'" << text << "' from " << start;
  ASSERT_EQ(cursor.pos, referenceCursor.pos) << "'" << text << "' from " << start;
}

void expectSameNumber(std::string_view text) {
  for (const std::string_view behind : kBehind) {
    expectSame(std::string(text) + std::string(behind), 0, parseNumber, test::referenceParseNumber);
  }
}

void expectSameEverywhere(std::string_view text) {
  for (std::size_t start = 0; start <= text.size() + 1; ++start) {
    expectSame(text, start, parseNumber, test::referenceParseNumber);
    expectSame(text, start, parseReference, test::referenceParseReference);
    expectSame(text, start, skipQuotedString, test::referenceSkipQuotedString);
    expectSame(text, start, parsePointList, test::referenceParsePointList);
    expectSame(text, start, parseIndexTriples, test::referenceParseIndexTriples);
    if (start < text.size() && text[start] == '(') {
      expectSame(text, start, skipParenthesisedGroup, test::referenceSkipParenthesisedGroup);
    }
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

TEST(ParseNumberAgainstReference, AgreesOnEveryShortToken) {
  forEveryString({"-", "+", "0", "7", ".", "E", ")"}, 6,
                 [](const std::string& text) { expectSameNumber(text); });
}

TEST(ParseNumberAgainstReference, AgreesOnEveryByteAtEveryPlace) {
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

TEST(ParseNumberAgainstReference, AgreesOnRandomTokens) {
  std::mt19937 random(4);
  for (int i = 0; i < 3'000'000; ++i) {
    expectSameNumber(token(random));
  }
}

TEST(ParseNumberAgainstReference, AgreesOnDoublesOfEveryMagnitude) {
  std::mt19937 random(5);
  for (int i = 0; i < 100'000; ++i) {
    expectSameNumber(printedDouble(random));
  }
}

TEST(ParseNumberAgainstReference, AgreesOnHalfWayCases) {
  std::mt19937 random(6);
  for (int i = 0; i < 100'000; ++i) {
    expectSameNumber(halfWay(random));
  }
}

TEST(ParseNumberAgainstReference, AgreesAtTheEndsOfTheRange) {
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

TEST(StepCursorAgainstReference, AgreesOnEveryShortText) {
  forEveryString({"(", ")", "'", ",", "1", " ", "#"}, 5,
                 [](const std::string& text) { expectSameEverywhere(text); });
}

TEST(StepCursorAgainstReference, AgreesOnRandomTexts) {
  const std::vector<std::string> pieces = {"(",
                                           ")",
                                           "((",
                                           "))",
                                           "),(",
                                           ",",
                                           ",",
                                           "1",
                                           "2.",
                                           "-3.5E1",
                                           "1E400",
                                           "1E",
                                           ".",
                                           "#1",
                                           "#",
                                           "'",
                                           "'a(b'",
                                           "''",
                                           "$",
                                           " ",
                                           "\r\n",
                                           "\t",
                                           "\f",
                                           "A",
                                           "\0"s,
                                           "\xFF",
                                           "*",
                                           ".T.",
                                           "(1,2,3)",
                                           "(1,2)",
                                           "(1,2,3,4)",
                                           "(4,5,6),",
                                           "((1,2,3),(4,5,6))",
                                           "3000000000",
                                           "-2147483649.5",
                                           "( 1 , 2 , 3 )"};
  std::mt19937 random(7);
  for (int i = 0; i < 20'000; ++i) {
    expectSameEverywhere(randomText(random, pieces, 16));
  }
}

}  // namespace
}  // namespace plenvorith
