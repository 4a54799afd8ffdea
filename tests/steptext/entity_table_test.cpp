#include "steptext/entity_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/reference/reference_entity_table.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::EntityTexts;
using test::forEveryString;
using test::pick;
using test::randomText;
using test::referenceEntityTable;
using test::tableOf;
using test::TempDir;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using namespace std::string_literals;

TEST(EntityTable, KeepsTheTextBehindTheEqualsSign) {
  EXPECT_THAT(tableOf("#12=CARTESIAN_POINT('',(0.,0.,0.));\n"),
              ElementsAre(Pair("#12", "CARTESIAN_POINT('',(0.,0.,0.));")));
}

TEST(EntityTable, JoinsContinuationLinesWithOneSpace) {
  EXPECT_EQ(tableOf("#20=COMPLEX_TRIANGULATED_FACE('',#5,\n(1,2,3));\n").at("#20"),
            "COMPLEX_TRIANGULATED_FACE('',#5, (1,2,3));");
}

TEST(EntityTable, KeepsTheIndentationOfContinuationLines) {
  EXPECT_EQ(tableOf("#20=FACE('',#5,\r\n  (1,2,3));\r\n").at("#20"), "FACE('',#5,   (1,2,3));");
}

TEST(EntityTable, IsEmptyForAFileWithoutEntities) {
  EXPECT_THAT(tableOf("ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\nENDSEC;\n"), IsEmpty());
  EXPECT_THAT(tableOf(""), IsEmpty());
  EXPECT_THAT(tableOf("\n\n"), IsEmpty());
}

TEST(EntityTable, JoinsALineWithBlanksAroundTheEqualsSign) {
  EXPECT_THAT(tableOf("#1=A;\n#12 = FOO;\n"), ElementsAre(Pair("#1", "A; #12 = FOO;")));
}

TEST(EntityTable, DropsALineWithBlanksAroundTheEqualsSignAboveTheFirstEntity) {
  EXPECT_THAT(tableOf("#12 = FOO;\n#1=A;\n"), ElementsAre(Pair("#1", "A;")));
}

TEST(EntityTable, JoinsIndentedEntitiesAndComments) {
  EXPECT_THAT(tableOf("#1=A;\n  #5=B;\n/* c */\n"), ElementsAre(Pair("#1", "A;   #5=B; /* c */")));
}

TEST(EntityTable, KeepsLeadingZerosInNames) {
  EXPECT_THAT(tableOf("#0012=FOO;\n#12=BAR;\n"),
              ElementsAre(Pair("#0012", "FOO;"), Pair("#12", "BAR;")));
}

TEST(EntityTable, StartsTheTextOfAnEmptyEntityWithASpace) {
  EXPECT_THAT(tableOf("#7=\nFOO;\n"), ElementsAre(Pair("#7", " FOO;")));
  EXPECT_THAT(tableOf("#7="), ElementsAre(Pair("#7", "")));
}

TEST(EntityTable, ReadsCrLfLikeLf) {
  EXPECT_THAT(tableOf("DATA;\r\n#1=A,\r\nB;\r\n\r\n#2=C;\r\nENDSEC;\r\n"),
              ElementsAre(Pair("#1", "A, B; "), Pair("#2", "C; ENDSEC;")));
  EXPECT_THAT(tableOf("DATA;\n#1=A,\nB;\n\n#2=C;\nENDSEC;\n"),
              ElementsAre(Pair("#1", "A, B; "), Pair("#2", "C; ENDSEC;")));
}

TEST(EntityTable, KeepsTheLastOfSeveralEntitiesWithOneName) {
  EXPECT_THAT(tableOf("#3=A;\n#4=X;\n#3=B;\n"), ElementsAre(Pair("#3", "B;"), Pair("#4", "X;")));
}

TEST(EntityTable, AddsOneSpaceForEachEmptyLine) {
  EXPECT_EQ(tableOf("#1=A\n\nB;\n").at("#1"), "A  B;");
  EXPECT_EQ(tableOf("#1=A\n\n\nB;\n").at("#1"), "A   B;");
}

TEST(EntityTable, KeepsTwoEntitiesOfOneLineAsOne) {
  EXPECT_THAT(tableOf("#1=A;#2=B;\n"), ElementsAre(Pair("#1", "A;#2=B;")));
}

TEST(EntityTable, StartsAnEntityThoughTheOneBeforeHasNoSemicolon) {
  EXPECT_THAT(tableOf("#1=A(\n#2=B;\n"), ElementsAre(Pair("#1", "A("), Pair("#2", "B;")));
}

TEST(EntityTable, JoinsTheLastLinesOfTheFileToTheLastEntity) {
  EXPECT_EQ(tableOf("#9=FOO;\nENDSEC;\nEND-ISO-10303-21;\n").at("#9"),
            "FOO; ENDSEC; END-ISO-10303-21;");
}

TEST(EntityTable, ReadsSeveralDataSectionsAsOne) {
  EXPECT_THAT(tableOf("DATA;\n#1=A;\nENDSEC;\nDATA;\n#2=B;\n"),
              ElementsAre(Pair("#1", "A; ENDSEC; DATA;"), Pair("#2", "B;")));
}

TEST(EntityTable, IsOrderedByBytes) {
  EXPECT_THAT(
      tableOf("#2=D;\n#100=C;\n#1=A;\n#10=B;\n"),
      ElementsAre(Pair("#1", "A;"), Pair("#10", "B;"), Pair("#100", "C;"), Pair("#2", "D;")));
}

TEST(EntityTable, KeepsBlanksAndCase) {
  EXPECT_EQ(tableOf("#1=  Foo ( ) ;\t \n").at("#1"), "  Foo ( ) ;\t ");
}

TEST(EntityTable, EndsTheFirstLineOfATextAtACarriageReturn) {
  EXPECT_EQ(tableOf("#1=AB\rCD;\n").at("#1"), "AB");
  EXPECT_EQ(tableOf("#1=AB\r\r\n").at("#1"), "AB");
  EXPECT_EQ(tableOf("#1=AB\rCD\rEF;\n").at("#1"), "AB");
  EXPECT_EQ(tableOf("#1=\rCD;\nE;\n").at("#1"), " E;");
}

TEST(EntityTable, KeepsACarriageReturnInsideAContinuationLine) {
  EXPECT_EQ(tableOf("#1=AB\nC\rD;\n").at("#1"), "AB C\rD;");
  EXPECT_EQ(tableOf("#1=AB\nCD;\r\r\n").at("#1"), "AB CD;\r");
  EXPECT_EQ(tableOf("#1=AB\n\r").at("#1"), "AB ");
}

TEST(EntityTable, ReadsALastLineWithoutLineFeed) {
  EXPECT_THAT(tableOf("#1=A;\n#2=B;"), ElementsAre(Pair("#1", "A;"), Pair("#2", "B;")));
  EXPECT_THAT(tableOf("#1=A;\n#2=B;\r"), ElementsAre(Pair("#1", "A;"), Pair("#2", "B;")));
}

TEST(EntityTable, KeepsNulsAndBytesThatAreNotUtf8) {
  EXPECT_EQ(tableOf("#1=A\0B\xFF\xC3;\n\0C\x80\n"s).at("#1"), "A\0B\xFF\xC3; \0C\x80"s);
}

TEST(EntityTable, IsEmptyAndSilentForAMissingFile) {
  const TempDir dir;
  EntityTable table;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  readEntityTable(table, dir / "missing.stp");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(table, IsEmpty());
}

TEST(EntityTable, IsEmptyForADirectory) {
  const TempDir dir;
  EntityTable table;
  readEntityTable(table, dir.path());
  EXPECT_THAT(table, IsEmpty());
}

// They take no memory: what was read is dropped again and again.
TEST(EntityTable, PassesOverManyLinesInFrontOfTheFirstEntity) {
  std::string content;
  for (int i = 0; i < 50'000; ++i) {
    content += "no entity " + std::to_string(i) + "\n";
  }
  content += "#1=A;\nB\n#2=C;\n";
  const EntityTexts expected = {{"#1", "A; B"}, {"#2", "C;"}};
  EXPECT_EQ(tableOf(content), expected);
}

TEST(EntityTable, PrintsNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(tableOf("#1=A;\n").size(), 1U);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(EntityTable, ReadsLinesOf64MiB) {
  constexpr std::size_t kLength = std::size_t{64} << 20U;
  const std::string filling(kLength, 'x');
  const EntityTexts table = tableOf("#1=" + filling + "\n" + filling + "\n#2=A;\n");
  ASSERT_EQ(table.size(), 2U);
  EXPECT_TRUE(table.at("#1") == filling + " " + filling);
  EXPECT_EQ(table.at("#2"), "A;");
}

TEST(EntityTable, ReadsLinesOfEveryLengthRoundPowersOfTwo) {
  for (std::size_t size = 512; size <= (std::size_t{2} << 20U); size *= 2) {
    for (std::size_t length = size - 4; length <= size + 4; ++length) {
      const std::string filling(length - 4, 'y');
      const EntityTexts table = tableOf("#1=" + filling + "\n#2=A;\nB\n");
      ASSERT_EQ(table.size(), 2U) << length;
      ASSERT_TRUE(table.at("#1") == filling) << length;
      ASSERT_EQ(table.at("#2"), "A; B") << length;
    }
  }
}

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;

/// Some megabytes of entities of one line or several, with every kind of line end.
std::string manyEntities() {
  std::mt19937 random(3);
  std::string content = "HEADER;\n";
  for (int number = 1; content.size() < 3'000'000; ++number) {
    content += "#" + std::to_string(number) + "=";
    for (std::size_t lines = 1 + pick(random, 4); lines > 0; --lines) {
      content.append(pick(random, pick(random, 50) == 0 ? 5000 : 100), 'A');
      content += pick(random, 20) == 0 ? "\rB" : "";
      content += pick(random, 3) == 0 ? "\r\n" : "\n";
    }
  }
  return content;
}

TEST(EntityTable, ReadsLinesAcrossTheBordersOfBlocks) {
  const std::string content = manyEntities();
  EXPECT_TRUE(tableOf(content) == referenceEntityTable(content));
}

TEST(EntityTable, ReadsAPipeThatTellsNoSize) {
  const std::string content = manyEntities();
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::thread writer([&] {
    std::string_view rest = content;
    while (!rest.empty()) {
      const ssize_t count =
          ::write(ends[1], rest.data(), std::min<std::size_t>(rest.size(), 10'007));
      rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    close(ends[1]);
  });
  EntityTable table;
  readEntityTable(table, "/proc/self/fd/" + std::to_string(ends[0]));
  writer.join();
  close(ends[0]);
  EXPECT_TRUE(test::textsIn(table) == referenceEntityTable(content));
}

TEST(EntityTable, KeepsTheLastOfSeveralLongEntitiesWithOneName) {
  const std::string longer(2 * kMebibyte, 'y');
  const std::string shorter(kMebibyte, 'x');
  EXPECT_TRUE(tableOf("#1=" + shorter + "\n#1=" + longer + "\n").at("#1") == longer);
  EXPECT_TRUE(tableOf("#1=" + longer + "\n#1=" + shorter + "\n").at("#1") == shorter);
  EXPECT_EQ(tableOf("#1=" + longer + "\n#2=A;\n#1=B;\n").at("#1"), "B;");
  EXPECT_TRUE(tableOf("#1=B;\n#2=A;\n#1=" + longer + "\n").at("#1") == longer);
}

// From 64 KiB on, lines may be read in pieces.
constexpr std::size_t kPiece = std::size_t{1} << 16U;

TEST(EntityTable, EndsALongFirstLineAtItsFirstCarriageReturn) {
  const std::string filling(3 * kPiece / 2, 'x');
  const EntityTexts table = tableOf("#1=" + filling + "\r" + filling + "\r#3=C;\nA;\n#2=B;\n");
  ASSERT_EQ(table.size(), 2U);
  EXPECT_TRUE(table.at("#1") == filling + " A;");
  EXPECT_EQ(table.at("#2"), "B;");
}

TEST(EntityTable, ReadsALongFirstLineWithoutItsFinalCarriageReturn) {
  for (std::size_t length = kPiece - 6; length <= kPiece - 2; ++length) {
    const std::string filling(length, 'x');
    EXPECT_TRUE(tableOf("#1=" + filling + "\r\n#2=B;").at("#1") == filling) << length;
    EXPECT_TRUE(tableOf("#1=" + filling + "\r").at("#1") == filling) << length;
  }
}

TEST(EntityTable, DropsOneCarriageReturnAtTheEndOfALongLine) {
  // What is not handed out yet moves to the front of the buffer: the line is cut behind 16 MiB.
  for (std::size_t length = kPiece - 3; length <= kPiece + 1; ++length) {
    const std::string line = "A\r" + std::string(length - 2, 'x');
    EXPECT_TRUE(tableOf("#1=\n" + line + "\r\n#2=B;\n").at("#1") == " " + line) << length;
    EXPECT_TRUE(tableOf("#1=\n" + line + "\r\r\n\r\n").at("#1") == " " + line + "\r ") << length;
    EXPECT_TRUE(tableOf("#1=\n" + line + "\r").at("#1") == " " + line) << length;
    EXPECT_TRUE(tableOf("#1=\n" + line).at("#1") == " " + line) << length;
  }
}

TEST(EntityTable, DropsALongLineAboveTheFirstEntity) {
  const std::string filling(5 * kPiece / 2, 'x');
  EXPECT_THAT(tableOf(filling + "#1=A;\n#2=B;\n"), ElementsAre(Pair("#2", "B;")));
}

TEST(EntityTable, StartsNoEntityInsideALongLine) {
  for (std::size_t length = kPiece - 2; length <= kPiece + 2; ++length) {
    const std::string line = std::string(length, 'x') + "#2=B;";
    EXPECT_TRUE(tableOf("#1=A\n" + line + "\n").at("#1") == "A " + line) << length;
  }
}

TEST(EntityTable, ReadsANameThatIsLongerThanAPiece) {
  const std::string name = "#" + std::string(3 * kPiece / 2, '7');
  EXPECT_EQ(tableOf("#1=A;\n" + name + "=B;\n#2=C;\n").at(name), "B;");
  EXPECT_TRUE(tableOf("#1=A;\n" + name + "\n#2=C;\n").at("#1") == "A; " + name);
  EXPECT_TRUE(tableOf("#1=A;\n" + name).at("#1") == "A; " + name);
}

TEST(EntityTable, AgreesWithTheRegularExpressionOnEveryShortFile) {
  forEveryString({"#", "1", "=", "\r", "\n", "A"}, 5, [](const std::string& content) {
    ASSERT_EQ(tableOf(content), referenceEntityTable(content)) << content;
  });
  forEveryString({"#1=", "#2=", "\r", "\n", ";"}, 5, [](const std::string& content) {
    ASSERT_EQ(tableOf(content), referenceEntityTable(content)) << content;
  });
}

TEST(EntityTable, AgreesWithTheRegularExpressionOnRandomFiles) {
  const std::vector<std::string> pieces = {
      "#",    "1",     "20",       "=",     "#3=", "\n#4=", "\n#05=", "\n", "\n",
      "\r\n", "\r",    " ",        "\t",    ";",   "\0"s,   "\xFF",   "'",  "A",
      "(#1)", "\n#6=", "\xC3\xA9", "/* */", "\f",  "\x85",  "\v"};
  std::mt19937 random(1);
  for (int i = 0; i < test::rounds(10'000); ++i) {
    const std::string content = randomText(random, pieces, 40);
    ASSERT_EQ(tableOf(content), referenceEntityTable(content)) << content;
  }
}

}  // namespace
}  // namespace plenvorith
