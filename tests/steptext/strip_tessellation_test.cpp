#include "steptext/strip_tessellation.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/support/captured_cout.h"
#include "tests/support/rounds.h"
#include "tests/support/scoped_env.h"
#include "tests/support/step_text.h"
#include "tests/support/strip_comparison.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::CapturedCout;
using test::forEveryString;
using test::randomText;
using test::readFile;
using test::ScopedEnv;
using test::StripComparison;
using test::TempDir;
using test::writeFile;

using namespace std::string_literals;

/// An input file, and a directory of its own for the copy.
class StripTessellation : public testing::Test {
 protected:
  /// What the copy of a file with this content holds; one must be made.
  std::string copyOf(const std::string& content) {
    const CapturedCout out;
    const std::string path = stripTessellation(writeFile(input, content));
    printed = out.text();
    EXPECT_EQ(path, copy);
    EXPECT_EQ(readFile(input), content);
    return readFile(path);
  }

  /// The line that is printed for this number of removed lines.
  std::string lineFor(int removed) const {
    return "[PREPROCESS] Stripped " + std::to_string(removed) + " lines -> " + copy + "\n";
  }

  /// Expects that nothing is made of a file with this content.
  void expectNoCopyOf(const std::string& content) {
    const CapturedCout out;
    EXPECT_EQ(stripTessellation(writeFile(input, content)), input);
    EXPECT_EQ(out.text(), "");
    EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
  }

  TempDir dir;
  TempDir temp;
  ScopedEnv env{"TMPDIR", temp.path()};
  std::string input = dir / "model.stp";
  std::string copy = temp / "model.stp.clean.stp";
  std::string printed;
};

TEST_F(StripTessellation, MakesNoCopyWithoutATriggerWord) {
  expectNoCopyOf("DATA;\n#1=CARTESIAN_POINT('',(0.,0.,0.));\nENDSEC;\n");
  expectNoCopyOf("");
  expectNoCopyOf("#1=COORDINATES_LIST('',1,((0.,0.,0.)));\n");
  expectNoCopyOf("#1=TESSELLATED\n_SOLID();\n");
  expectNoCopyOf("#1=tessellated_solid();\n");
  expectNoCopyOf("#1=COMPLEX_TRIANGULATED;\n");
}

TEST_F(StripTessellation, MakesACopyForATriggerWordAnywhere) {
  EXPECT_EQ(copyOf("TESSELLATED_"), "TESSELLATED_\n");
  EXPECT_EQ(copyOf("/* COMPLEX_TRIANGULATED_ */\nDATA;\n"), "/* COMPLEX_TRIANGULATED_ */\nDATA;\n");
  EXPECT_EQ(copyOf("FILE_NAME('TESSELLATED_X');\n"), "FILE_NAME('TESSELLATED_X');\n");
}

TEST_F(StripTessellation, FindsATriggerWordAcrossTheBlocksOfALongFile) {
  // All of the file is one entity, so that the copies stay small.
  const std::string start = "#1=COORDINATES_LIST(";
  for (const std::string word : {"TESSELLATED_", "COMPLEX_TRIANGULATED_"}) {
    for (const std::size_t border :
         {std::size_t{4096}, std::size_t{1} << 17U, std::size_t{2} << 17U}) {
      for (std::size_t place = border - 45; place <= border + 1; ++place) {
        const std::string before = start + std::string(place - start.size(), 'x');
        ASSERT_EQ(copyOf(before + word + "xx"), "") << word << " at " << place;
        ASSERT_EQ(printed, lineFor(1));
        ASSERT_EQ(copyOf(before + word), "") << word << " at " << place;
      }
    }
  }
}

TEST_F(StripTessellation, MakesNoCopyWhereATriggerWordHasALineFeedBetweenTheBlocks) {
  expectNoCopyOf(std::string((std::size_t{1} << 17U) - 11, 'x') + "TESSELLATED\n_");
}

TEST_F(StripTessellation, ReadsAPipeOnce) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const std::string content = "DATA;\n#1=TESSELLATED_SOLID();\n#2=A;\n";
  ASSERT_EQ(::write(ends[1], content.data(), content.size()), static_cast<ssize_t>(content.size()));
  close(ends[1]);
  const CapturedCout out;
  EXPECT_EQ(readFile(stripTessellation("/proc/self/fd/" + std::to_string(ends[0]))),
            "DATA;\n#2=A;\n");
  close(ends[0]);
}

TEST_F(StripTessellation, CopiesATypeThatIsNotOnItsListAndCountsZero) {
  const std::string content = "#1=TESSELLATED_SHELL('',(#2),$);\n#2=TRIANGULATED_FACE();\n";
  EXPECT_EQ(copyOf(content), content);
  EXPECT_EQ(printed, lineFor(0));
}

TEST_F(StripTessellation, RemovesTheFourTypes) {
  EXPECT_EQ(copyOf("DATA;\n"
                   "#1=TESSELLATED_SOLID('',(#3),$);\n"
                   "#2=TESSELLATED_SHAPE_REPRESENTATION('',(#1),#9);\n"
                   "#3=COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),((1,2,3)),());\n"
                   "#4=COORDINATES_LIST('',1,((0.,0.,0.)));\n"
                   "#5=SHAPE_REPRESENTATION_RELATIONSHIP('','',#6,#2);\n"
                   "ENDSEC;\n"),
            "DATA;\n#5=SHAPE_REPRESENTATION_RELATIONSHIP('','',#6,#2);\nENDSEC;\n");
  EXPECT_EQ(printed, lineFor(4));
}

TEST_F(StripTessellation, RemovesTypesThatBeginLikeOneOfTheFour) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID_X();\n#2=COORDINATES_LISTING();\n#3=A;\n"), "#3=A;\n");
  EXPECT_EQ(printed, lineFor(2));
}

TEST_F(StripTessellation, KeepsEntitiesWithBlanksAroundTheEqualsSign) {
  const std::string content =
      "#5 = COORDINATES_LIST('',1,((0.,0.,0.)));\n"
      " #6=TESSELLATED_SOLID('',(#3),$);\n"
      "#7= TESSELLATED_SOLID('',(#3),$);\n"
      "# 8=TESSELLATED_SOLID('',(#3),$);\n"
      "#=TESSELLATED_SOLID('',(#3),$);\n";
  EXPECT_EQ(copyOf(content), content);
  EXPECT_EQ(printed, lineFor(0));
}

TEST_F(StripTessellation, KeepsComplexInstancesAndLowerCase) {
  const std::string content =
      "#1=(TESSELLATED_ITEM()TESSELLATED_SOLID('',(#3),$));\n#2=tessellated_solid();\n";
  EXPECT_EQ(copyOf(content), content);
  EXPECT_EQ(printed, lineFor(0));
}

TEST_F(StripTessellation, RemovesAnEntityOf120LinesWithCrLf) {
  std::string content = "TESSELLATED_\r\n#1=COORDINATES_LIST('',119,(\r\n";
  for (int i = 0; i < 118; ++i) {
    content += "(0.,0.,0.),\r\n";
  }
  content += "(0.,0.,0.)));\r\n#2=A;\r\n";
  EXPECT_EQ(copyOf(content), "TESSELLATED_\r\n#2=A;\r\n");
  EXPECT_EQ(printed, lineFor(120));
}

TEST_F(StripTessellation, RemovesUpToTheNextLineThatEndsWithASemicolon) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID(); \n#2=A\n#3=B;\n#4=C;\n"), "#4=C;\n");
  EXPECT_EQ(printed, lineFor(3));
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID(); /* c */\n#2=A;\n#3=B;\n"), "#3=B;\n");
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID();\t\n#2=A;\n#3=B;\n"), "#3=B;\n");
}

TEST_F(StripTessellation, RemovesAnEmptyLineInsideABlock) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID(\n\n\r\n);\n#2=A;\n"), "#2=A;\n");
  EXPECT_EQ(printed, lineFor(4));
}

TEST_F(StripTessellation, RemovesToTheEndOfTheFileWithoutASemicolon) {
  EXPECT_EQ(copyOf("DATA;\n#1=TESSELLATED_SOLID(\n#2=A\nENDSEC\n"), "DATA;\n");
  EXPECT_EQ(printed, lineFor(3));
}

TEST_F(StripTessellation, DoesNotLookForAStartInsideABlock) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID(\n#2=COORDINATES_LIST(\n);\n#3=A;\n"), "#3=A;\n");
  EXPECT_EQ(printed, lineFor(3));
}

TEST_F(StripTessellation, TakesSeveralCarriageReturnsAtTheEndOfALine) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID();\r\r\r\n#2=A;\n"), "#2=A;\n");
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID(;\r \r\n#2=A;\n#3=B;\n"), "#3=B;\n");
}

TEST_F(StripTessellation, RemovesAWholeLineOfSeveralEntities) {
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID();#2=A;\n#3=B;#4=TESSELLATED_SOLID();\n"),
            "#3=B;#4=TESSELLATED_SOLID();\n");
  EXPECT_EQ(printed, lineFor(1));
}

TEST_F(StripTessellation, EndsTheCopyWithALineFeed) {
  EXPECT_EQ(copyOf("TESSELLATED_\nENDSEC;"), "TESSELLATED_\nENDSEC;\n");
  EXPECT_EQ(copyOf("TESSELLATED_\nENDSEC;\n"), "TESSELLATED_\nENDSEC;\n");
  EXPECT_EQ(copyOf("TESSELLATED_\n\n\n"), "TESSELLATED_\n\n\n");
  EXPECT_EQ(copyOf("#1=TESSELLATED_SOLID();"), "");
  EXPECT_EQ(printed, lineFor(1));
  EXPECT_EQ(copyOf("#2=A;\n#1=TESSELLATED_SOLID();"), "#2=A;\n");
}

TEST_F(StripTessellation, CopiesOtherLinesByteForByte) {
  const std::string content = "TESSELLATED_\r\nA\rB\0C\xFF\xC3\t \r\r\n\0\n"s;
  EXPECT_EQ(copyOf(content), content);
}

TEST_F(StripTessellation, ReadsALineOf64MiB) {
  const std::string filling(std::size_t{64} << 20U, 'x');
  EXPECT_TRUE(copyOf("#1=TESSELLATED_SOLID(" + filling + ");\n" + filling) == filling + "\n");
  EXPECT_EQ(printed, lineFor(1));
}

TEST_F(StripTessellation, ReturnsThePathOfAFileThatCannotBeOpened) {
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(dir / "missing.stp"), dir / "missing.stp");
  EXPECT_EQ(stripTessellation(""), "");
  EXPECT_EQ(out.text(), "");
  EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

TEST_F(StripTessellation, ReturnsThePathOfADirectory) {
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(dir.path()), dir.path());
  EXPECT_EQ(out.text(), "");
}

TEST_F(StripTessellation, OverwritesAnOlderCopy) {
  writeFile(copy, std::string(1000, 'x'));
  EXPECT_EQ(copyOf("TESSELLATED_\n"), "TESSELLATED_\n");
}

TEST_F(StripTessellation, JoinsWithOneSeparator) {
  const ScopedEnv slash("TMPDIR", temp.path().string() + "/");
  EXPECT_EQ(copyOf("TESSELLATED_\n"), "TESSELLATED_\n");
  EXPECT_EQ(printed, lineFor(0));
}

TEST_F(StripTessellation, RejectsAMissingTemporaryDirectory) {
  writeFile(input, "TESSELLATED_\n");
  const ScopedEnv missing("TMPDIR", temp / "missing");
  const CapturedCout out;
  EXPECT_THAT([this] { (void)stripTessellation(input); },
              testing::ThrowsMessage<std::filesystem::filesystem_error>(
                  testing::HasSubstr("temp_directory_path")));
  EXPECT_EQ(out.text(), "");
  EXPECT_EQ(readFile(input), "TESSELLATED_\n");
}

TEST_F(StripTessellation, RejectsAFileAsTemporaryDirectory) {
  writeFile(input, "TESSELLATED_\n");
  const ScopedEnv file("TMPDIR", input);
  const CapturedCout out;
  EXPECT_THROW((void)stripTessellation(input), std::filesystem::filesystem_error);
  EXPECT_EQ(out.text(), "");
}

TEST_F(StripTessellation, DoesNotAskForATemporaryDirectoryWithoutATriggerWord) {
  const ScopedEnv missing("TMPDIR", temp / "missing");
  expectNoCopyOf("DATA;\n");
}

TEST_F(StripTessellation, PrintsItsLineThoughTheCopyCannotBeWritten) {
  std::filesystem::create_directory(copy);
  writeFile(input, "#1=TESSELLATED_SOLID();\n#2=A;\n");
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(input), copy);
  EXPECT_EQ(out.text(), lineFor(1));
  EXPECT_TRUE(std::filesystem::is_empty(copy));
}

TEST_F(StripTessellation, PrintsItsLineThoughTheDiskIsFull) {
  std::filesystem::create_symlink("/dev/full", copy);
  writeFile(input, "#1=TESSELLATED_SOLID();\n#2=A;\n");
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(input), copy);
  EXPECT_EQ(out.text(), lineFor(1));
}

TEST_F(StripTessellation, LeavesAnInputInTheTemporaryDirectoryAsItIs) {
  const std::string content = "#1=TESSELLATED_SOLID();\n#2=A;\n";
  input = writeFile(temp / "model.stp", content);
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(input), copy);
  EXPECT_EQ(readFile(input), content);
  EXPECT_EQ(readFile(copy), "#2=A;\n");
}

TEST_F(StripTessellation, StripsACopyIntoACopyOfIt) {
  input = writeFile(copy, "TESSELLATED_\n");
  const CapturedCout out;
  EXPECT_EQ(stripTessellation(input), copy + ".clean.stp");
}

/// The name that the copy of a file with this name in the current directory gets.
class StripTessellationName : public StripTessellation {
 protected:
  StripTessellationName() {
    std::filesystem::current_path(dir.path());
  }
  ~StripTessellationName() override {
    std::filesystem::current_path(before_);
  }
  StripTessellationName(const StripTessellationName&) = delete;
  StripTessellationName& operator=(const StripTessellationName&) = delete;

  std::string nameFor(const std::string& original) {
    const CapturedCout out;
    const std::string path = stripTessellation(writeFile(original, "TESSELLATED_\n"));
    const std::string start = temp.path().string() + "/";
    EXPECT_EQ(path.substr(0, start.size()), start);
    EXPECT_EQ(out.text(), "[PREPROCESS] Stripped 0 lines -> " + path + "\n");
    EXPECT_EQ(readFile(path), "TESSELLATED_\n");
    return path.substr(start.size());
  }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(StripTessellationName, IsTheWholePathWithoutADirectory) {
  EXPECT_EQ(nameFor("model.stp"), "model.stp.clean.stp");
  EXPECT_EQ(nameFor("model"), "model.clean.stp");
  EXPECT_EQ(nameFor("model.STEP"), "model.STEP.clean.stp");
  EXPECT_EQ(nameFor(".stp"), ".stp.clean.stp");
  EXPECT_EQ(nameFor("a b\xFF.stp"), "a b\xFF.stp.clean.stp");
}

TEST_F(StripTessellationName, IsWhatFollowsTheLastSeparator) {
  std::filesystem::create_directory("parts");
  EXPECT_EQ(nameFor("parts/pump.step"), "pump.step.clean.stp");
  EXPECT_EQ(nameFor("./parts//pump.step"), "pump.step.clean.stp");
  EXPECT_EQ(nameFor(dir / "pump.step"), "pump.step.clean.stp");
}

TEST_F(StripTessellationName, TakesABackslashAsASeparator) {
  std::filesystem::create_directory("a\\b");
  EXPECT_EQ(nameFor("parts\\pump.step"), "pump.step.clean.stp");
  EXPECT_EQ(nameFor("D:\\parts\\pump.step"), "pump.step.clean.stp");
  EXPECT_EQ(nameFor("a\\b/pump.step"), "pump.step.clean.stp");
}

TEST_F(StripTessellationName, LeavesOutADrivePrefix) {
  EXPECT_EQ(nameFor("C:model.stp"), "model.stp.clean.stp");
  EXPECT_EQ(nameFor("c:model.stp"), "model.stp.clean.stp");
}

TEST_F(StripTessellationName, KeepsAColonThatEndsNoDrivePrefix) {
  EXPECT_EQ(nameFor("AB:model.stp"), "AB:model.stp.clean.stp");
  EXPECT_EQ(nameFor("1:model.stp"), "1:model.stp.clean.stp");
}

void expectSame(StripComparison& comparison, const std::string& content) {
  ASSERT_EQ(comparison.differenceFor(content), "") << content;
}

TEST(StripTessellationAgainstReference, AgreesOnEveryShortLine) {
  // All strings of the alphabet in one file, each a line that must go or stay, with a type name
  // in place of the letter; the line behind ends a block.
  std::string content;
  forEveryString({"#", "1", "=", " ", "\r", "TESSELLATED_SOLID", ";"}, 6,
                 [&content](const std::string& line) { content += line + "\n;\n"; });
  StripComparison comparison;
  expectSame(comparison, content);
}

TEST(StripTessellationAgainstReference, AgreesOnEveryShortFile) {
  StripComparison comparison;
  forEveryString({"#1=TESSELLATED_SOLID", "COORDINATES_LIST", "#1=", "\n", "\r", ";"}, 4,
                 [&comparison](const std::string& content) {
                   expectSame(comparison, "TESSELLATED_" + content);
                 });
}

TEST(StripTessellationAgainstReference, AgreesOnRandomFiles) {
  const std::vector<std::string> pieces = {"#1=",
                                           "\n#2=",
                                           "\n#3=",
                                           "\r\n#04=",
                                           "TESSELLATED_SOLID",
                                           "TESSELLATED_SHAPE_REPRESENTATION",
                                           "COMPLEX_TRIANGULATED_FACE",
                                           "COORDINATES_LIST",
                                           "TESSELLATED_SHELL",
                                           "COMPLEX_TRIANGULATED_",
                                           "SOLID",
                                           "\n",
                                           "\n",
                                           "\r\n",
                                           "\r",
                                           ";",
                                           ";\n",
                                           ";",
                                           " ",
                                           "\0"s,
                                           "\xFF",
                                           "(1,2)",
                                           "/* ; */"};
  StripComparison comparison;
  std::mt19937 random(3);
  for (int i = 0; i < test::rounds(4'000); ++i) {
    expectSame(comparison, randomText(random, pieces, 40));
  }
}

}  // namespace
}  // namespace plenvorith
