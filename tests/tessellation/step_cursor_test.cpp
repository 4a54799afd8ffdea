#include "tessellation/step_cursor.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/reference/reference_step_cursor.h"
#include "tests/support/no_numbers.h"
#include "tests/support/outcome.h"
#include "tests/support/records.h"
#include "tests/support/rounds.h"
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

TEST(ScanNumber, GivesErrorsInsteadOfThrowing) {
  double value = 0.5;
  StepCursor cursor{" -,1E400,2.5"};
  EXPECT_EQ(scanNumber(cursor, value), NumberError::NoNumber);
  EXPECT_EQ(cursor.pos, 2U);
  consumeIf(cursor, ',');
  EXPECT_EQ(scanNumber(cursor, value), NumberError::OutOfRange);
  EXPECT_EQ(cursor.pos, 8U);
  EXPECT_EQ(value, 0.5);
  consumeIf(cursor, ',');
  EXPECT_EQ(scanNumber(cursor, value), NumberError::None);
  EXPECT_EQ(value, 2.5);
}

TEST(ParseNumber, ReadsNumbersBehindBlanks) {
  EXPECT_EQ(numberIn("12"), 12.0);
  EXPECT_EQ(numberIn("-12.5E1"), -125.0);
  EXPECT_EQ(numberIn("0.1000000000000000055511151231257827021181583404541015625"), 0.1);
  EXPECT_EQ(numberIn(" \t\r\n3"), 3.0);
  EXPECT_EQ(numberIn(" 1.5.5", 4), 1.5);
}

TEST(ParseNumber, RejectsANumberOutOfRange) {
  expectOutOfRange("1E400");
  expectOutOfRange("  -1E-400");
}

TEST(ParseNumber, RejectsATokenWithoutANumber) {
  for (const auto& [text, length] : test::kNoNumbers) {
    expectNoNumberIn(text, length);
  }
  expectNoNumberIn("  ", 2);
  expectNoNumberIn(" ,", 1);
}

TEST(ParseNumber, RejectsANumberBehindTheEnd) {
  StepCursor cursor{"1", 2};
  EXPECT_THAT([&] { parseNumber(cursor); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_EQ(cursor.pos, 2U);
}

TEST(MaxTripleCount, IsTheNumberOfParenthesesUpToTheEndOfTheList) {
  EXPECT_EQ(maxTripleCount("((1,2,3),(4,5,6),(7,8,9))"), 3U);  // as many as there is room for
  EXPECT_EQ(maxTripleCount("((10,20,30),(40,50,60),(70,80,90))"), 4U);
  EXPECT_EQ(maxTripleCount("((10,20,30),(40,50,60)),((1,2,3,4,5,6,7,8),(1,2,3,4,5,6,7,8)));"), 3U);
  EXPECT_EQ(maxTripleCount(""), 0U);
}

TEST(MaxTripleCount, IsRightWhereverTheListEnds) {
  std::string list = "(";
  for (std::size_t count = 1; count <= 200; ++count) {
    list += "(100,200,300),";
    const std::string behind = "),((1,2,3),(4,5,6),(7,8,9),(1,2,3),(4,5,6),(7,8,9),(1,2,3)));";
    const std::string closed = list.substr(0, list.size() - 1) + behind;
    ASSERT_EQ(maxTripleCount(closed), count + 1);
  }
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
  StepCursor referenceCursor{text, start};
  const Outcome expected = outcomeOf([&] { return reference(referenceCursor); });
  for (const std::string_view behind :
       {"", "1234567890,12.25E5),(3.5,7.,8.),(1,2,3),(4,5,6),(7,8,9))....",
        ".5),(1,2,3),(1,2,3),(1,2,3),(1,2,3),(1,2,3),(1,2,3),(1,2,3),(1,2,"}) {
    // Memory of just this size, so that a sanitizer sees what is read behind its end.
    std::vector<char> characters(text.begin(), text.end());
    characters.insert(characters.end(), behind.begin(), behind.end());
    StepCursor cursor{{characters.data(), text.size()}, start, behind.size()};
    const Outcome actual = outcomeOf([&] { return operation(cursor); });
    ASSERT_EQ(actual, expected) << "'" << text << "' from " << start;
    ASSERT_EQ(cursor.pos, referenceCursor.pos) << "'" << text << "' from " << start;
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

/// A number as lists of points or triples hold them, and now and then one that they do not.
std::string listNumber(std::mt19937& random, bool isIndex) {
  const auto digits = [&random](std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      text += static_cast<char>('0' + pick(random, 10));
    }
    return text;
  };
  const std::vector<std::string> rare = {
      "",    "-",   ".",    "+1",    "1E2", "1.5E-3", "$",     " 1", "1 ",      "1..2",
      "-.5", "1.E", "\xB9", "1E400", "--1", "1:25",   "/1.25", "#1", "(1,2,3)", "1\n"};
  if (pick(random, 200) == 0) {
    return rare[pick(random, rare.size())];
  }
  if (isIndex && pick(random, 50) != 0) {
    return digits(1 + pick(random, pick(random, 8) == 0 ? 12 : 7));
  }
  const std::string sign = pick(random, 2) == 0 ? "-" : "";
  const std::size_t longest = pick(random, 8) == 0 ? 20 : 8;
  return sign + digits(1 + pick(random, pick(random, 8) == 0 ? 12 : 4)) + "." +
         digits(pick(random, longest));
}

/// A list of `count` triples, with blanks in some places.
std::string list(std::mt19937& random, std::size_t count, bool isIndex) {
  const std::vector<std::string> blanks = {" ", "\r\n", "\n ", "\t"};
  const auto blank = [&] {
    return pick(random, 40) == 0 ? blanks[pick(random, blanks.size())] : std::string();
  };
  std::string text = "(";
  for (std::size_t i = 0; i < count; ++i) {
    text += i == 0 ? "" : blank() + "," + blank();
    text += "(" + blank() + listNumber(random, isIndex) + "," + listNumber(random, isIndex) + "," +
            listNumber(random, isIndex) + blank() + ")";
  }
  return text + ")";
}

/// Expects the same of a list, both at the start of a text and behind so much that is none that its
/// first item can be looked at from in front, too.
void expectSameLists(const std::string& text) {
  const std::string front = "12345678,";
  for (const std::string& list : {text, front + text}) {
    const std::size_t start = list.size() - text.size();
    expectSame(list, start, parsePointList, test::referenceParsePointList);
    expectSame(list, start, parseIndexTriples, test::referenceParseIndexTriples);
  }
}

TEST(ListsAgainstReference, AgreeOnRandomLists) {
  std::mt19937 random(8);
  for (int i = 0; i < test::rounds(30'000); ++i) {
    expectSameLists(list(random, pick(random, 30), i % 2 == 0));
  }
}

TEST(ListsAgainstReference, AgreeOnEveryByteAtEveryPlace) {
  const std::string triples = "((1,23456789,3),(4,5,6),(7,8,9),(10,11,12),(13,14,15),(1,1,1))";
  const std::string points =
      "((-1.5,2.12345678,3.),(40.,-5.123456789012,61.5),(0.,0.,0.),(1.,2.,3.),(4.,5.,6.),(7.,8.,9.)"
      ")";
  for (const std::string& whole : {triples, points}) {
    for (int byte = 0; byte < 256; byte += test::stride(3)) {
      for (std::size_t place = 0; place < whole.size(); ++place) {
        std::string text = whole;
        text[place] = static_cast<char>(byte);
        expectSameLists(text);
      }
    }
  }
}

TEST(ListsAgainstReference, AgreeOnEveryBeginningWithTheRestBehindIt) {
  const std::string triples = "((1,23456789,3),(4,5,6),(7,8,9),(10,11,12),(13,14,15),(1,1,1))";
  const std::string points =
      "((-1.5,2.12345678,3.),(40.,-5.123456789012,61.5),(0.,0.,0.),(1.,2.,3.),(4.,5.,6.))";
  const auto expectSameBeginning = [](std::string_view whole, std::size_t size, auto operation,
                                      auto reference) {
    StepCursor cursor{whole.substr(0, size), 0, whole.size() - size};
    StepCursor referenceCursor{whole.substr(0, size)};
    const Outcome expected = outcomeOf([&] { return reference(referenceCursor); });
    ASSERT_EQ(outcomeOf([&] { return operation(cursor); }), expected) << whole << " to " << size;
    ASSERT_EQ(cursor.pos, referenceCursor.pos) << whole << " to " << size;
  };
  for (const std::string& list : {triples, points}) {
    const std::string whole = list + std::string(100, '1');
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      expectSameBeginning(whole, size, parsePointList, test::referenceParsePointList);
      expectSameBeginning(whole, size, parseIndexTriples, test::referenceParseIndexTriples);
    }
  }
}

/// The pieces one behind the other.
std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) {
    text += piece;
  }
  return text;
}

TEST(ListsAgainstReference, AgreeOnDigitsThatOverflowSixtyFourBits) {
  const std::string behind = ",2.,3.),(1.,2.,3.),(4.,5.,6.),(7.,8.,9.),(1.,2.,3.),(4.,5.,6.))";
  for (const std::string number : {"18446744.073709551616", "18446744.073709551617",
                                   "-18446744.0737095516170", "36893488.1474191032330"}) {
    expectSameLists(joined({"((", number, behind}));
  }
}

TEST(ListsAgainstReference, AgreeOnNumbersOfEveryLength) {
  const std::string behind = ",(1.,2.,3.),(4.,5.,6.),(7.,8.,9.),(1.,2.,3.),(4.,5.,6.),(7.,8.,9.))";
  for (std::size_t whole = 0; whole <= 40; ++whole) {
    for (std::size_t fraction = 0; fraction <= 40; ++fraction) {
      for (const std::string sign : {"", "-"}) {
        for (const std::string point : {"", "."}) {
          const std::string number =
              joined({sign, std::string(whole, '9'), point, std::string(fraction, '8')});
          expectSameLists(joined({"((", number, ",2,3)", behind}));
          expectSameLists(joined({"((1.25,-2.,", number, ")", behind}));
          expectSameLists(joined({"((1,", number, ",3)", behind}));
        }
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
  for (int i = 0; i < test::rounds(20'000); ++i) {
    expectSameEverywhere(randomText(random, pieces, 16));
  }
}

}  // namespace
}  // namespace plenvorith
