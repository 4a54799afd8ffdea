#include "tests/cli/case_file.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::ThrowsMessage;

Case parsed(const std::string& text) {
  const std::vector<Case> cases = parseCases(text, "missing");
  EXPECT_THAT(cases, SizeIs(1));
  return cases.at(0);
}

TEST(ParseCases, ReadsSectionsOfTextAndOfWords) {
  const Case result = parsed(
      "# About.\n"
      "# More about.\n"
      "\n"
      "== file in.txt\n"
      " a \n"
      "\n"
      "#1=B;\n"
      "\n"
      "\n"
      "== bytes b\n"
      "x  \"y z\"\n"
      "\n"
      "== run program in.txt \"\" \" o ut\"\n"
      "== out\n"
      "Done\n");
  ASSERT_THAT(result.setup, SizeIs(2));
  EXPECT_EQ(result.setup[0].line, 4);
  EXPECT_EQ(result.setup[0].name, "file");
  EXPECT_THAT(result.setup[0].words, ElementsAre("in.txt"));
  EXPECT_THAT(result.setup[0].lines, ElementsAre(" a ", "", "#1=B;"));
  EXPECT_THAT(result.setup[0].rows, IsEmpty());
  EXPECT_EQ(result.setup[1].name, "bytes");
  EXPECT_THAT(result.setup[1].rows, ElementsAre(ElementsAre("x", "y z")));
  ASSERT_THAT(result.runs, SizeIs(1));
  EXPECT_EQ(result.runs[0].command.line, 13);
  EXPECT_THAT(result.runs[0].command.words, ElementsAre("program", "in.txt", "", " o ut"));
  ASSERT_THAT(result.runs[0].expected, SizeIs(1));
  EXPECT_EQ(result.runs[0].expected[0].name, "out");
  EXPECT_THAT(result.runs[0].expected[0].lines, ElementsAre("Done"));
}

TEST(ParseCases, KeepsWhatFollowsARunWithIt) {
  const Case result = parsed(
      "# About.\n"
      "== run one\n"
      "== status 1\n"
      "== run-without-rights two\n"
      "== status 2\n"
      "== check\n"
      "a size 3\n");
  ASSERT_THAT(result.runs, SizeIs(2));
  EXPECT_THAT(result.runs[0].command.words, ElementsAre("one"));
  ASSERT_THAT(result.runs[0].expected, SizeIs(1));
  EXPECT_THAT(result.runs[0].expected[0].words, ElementsAre("1"));
  EXPECT_THAT(result.runs[1].command.words, ElementsAre("two"));
  EXPECT_THAT(result.runs[1].expected, SizeIs(2));
}

TEST(ParseCases, KnowsEscapesInQuotedWordsOnly) {
  const Case result = parsed("# About.\n== run p \"\\n\\r\\t\\\\\\\"\\x00\\xc3\" a\\n\"b\n");
  EXPECT_THAT(result.runs[0].command.words,
              ElementsAre("p", std::string("\n\r\t\\\"\0\xC3", 7), "a\\n\"b"));
}

TEST(ParseCases, MakesACaseOfEachRow) {
  const std::vector<Case> cases = parseCases(
      "# About.\n"
      "== each name text\n"
      "a \"x y\"\n"
      "b \"\"\n"
      "== file {name}.step\n"
      "<{text}>{text}\n"
      "== run p {name} -{text} {other}\n",
      "missing");
  ASSERT_THAT(cases, SizeIs(2));
  EXPECT_EQ(cases[0].row, "\"a\" \"x y\"");
  EXPECT_THAT(cases[0].setup[0].words, ElementsAre("a.step"));
  EXPECT_THAT(cases[0].setup[0].lines, ElementsAre("<x y>x y"));
  EXPECT_THAT(cases[0].runs[0].command.words, ElementsAre("p", "a", "-x y", "{other}"));
  EXPECT_THAT(cases[1].runs[0].command.words, ElementsAre("p", "b", "-", "{other}"));
}

TEST(ParseCases, PutsTextsIntoACommonText) {
  const TempDir common;
  writeFile(common / "saved.txt", "Saved: {path}{path}\n{other}\n");
  const std::string text = "# About.\n== run p\n== out\n";
  EXPECT_THAT(
      parseCases(text + "<use saved path=a.stl>\n", common.path()).at(0).runs[0].expected[0].lines,
      ElementsAre("Saved: a.stla.stl", "{other}"));
  for (const char* wrong : {"<use saved path>\n", "<use saved place=a>\n"}) {
    EXPECT_THROW((void)parseCases(text + wrong, common.path()), std::runtime_error) << wrong;
  }
}

TEST(ParseCases, PutsInACommonText) {
  const TempDir common;
  writeFile(common / "start.txt", "Reading\n  {n} shapes\n");
  const std::vector<Case> cases = parseCases(
      "# About.\n"
      "== each n\n"
      "7\n"
      "== run p\n"
      "== out\n"
      "<use start>\n"
      "Done\n",
      common.path());
  EXPECT_THAT(cases.at(0).runs[0].expected[0].lines, ElementsAre("Reading", "  7 shapes", "Done"));
}

/// Texts, and what they are rejected with.
const std::vector<std::pair<std::string, std::string>> kWrongCases = {
    {"", "line 1: a case begins with lines that tell what it is about, behind \"# \""},
    {"== run p\n", "line 1: a case begins with lines that tell what it is about, behind \"# \""},
    {"# A.\n", "line 1: a case without a run"},
    {"# A.\n\nabout\n== run p\n", "line 3: in front of the first section, lines begin with \"# \""},
    {"# A.\n== rum p\n", "line 2: there is no section \"rum\""},
    {"# A.\n==  \n", "line 2: a heading without a name"},
    {"# A.\n== run\n", "line 2: a wrong number of words behind \"run\""},
    {"# A.\n== run p\n== out own lines\n", "line 3: a wrong number of words behind \"out\""},
    {"# A.\n== run p\nDone\n", "line 3: nothing may stand below \"run\""},
    {"# A.\n== run p\n== made a\nb\n", "line 4: nothing may stand below \"made\""},
    {"# A.\n== out\n== run p\n", "line 2: \"out\" stands behind a run"},
    {"# A.\n== run p\n== file a\n", "line 3: \"file\" stands in front of the first run"},
    {"# A.\n== run p\n== out\n== err\n== out\n", "line 5: \"out\" stands there twice"},
    {"# A.\n== run p\r\n", "line 2: lines end in a line feed alone; write others as bytes"},
    {"# A.\n== run p \"a\n", "line 2: a quoted word has no end"},
    {"# A.\n== run p \"a\\\"\n", "line 2: a quoted word has no end"},
    {"# A.\n== run p \"a\"b\n", "line 2: a quoted word is not followed by a blank"},
    {"# A.\n== run p \"\\q\"\n",
     "line 2: a backslash in quotes is followed by n, r, t, \\, \" or x and two digits"},
    {"# A.\n== run p \"\\xg0\"\n",
     "line 2: a backslash in quotes is followed by n, r, t, \\, \" or x and two digits"},
    {"# A.\n== run p\n== out\n<use start>\n", "line 4: there is no common text \"start\""},
    {"# A.\n== run p\n== out\n<use start\n", "line 4: \"<use\" without \">\""},
    {"# A.\n== each a\n== run {a}\n", "line 2: a table without rows"},
    {"# A.\n== each a b\n1\n== run {a} {b}\n",
     "line 2: rows have as many words as the table has names"},
    {"# A.\n== each a b\n1 2\n== run {a}\n", "line 2: {b} stands nowhere"},
    {"# A.\n== each a\n1\n== each b\n2\n== run {a} {b}\n", "line 4: a second table"},
};

TEST(ParseCases, RejectsWhatItDoesNotUnderstand) {
  for (const auto& [text, message] : kWrongCases) {
    EXPECT_THAT([&text = text] { (void)parseCases(text, "missing"); },
                ThrowsMessage<std::runtime_error>(message))
        << text;
  }
}

}  // namespace
}  // namespace plenvorith::test
