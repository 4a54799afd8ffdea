// The temporary copy without tessellation. The kernel refuses a deflection of 1e-9 with an error
// that nothing catches, and so leaves the copy to be looked at. Some of its releases end the
// program already on the tessellation that a copy keeps.

#include <csignal>
#include <string>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

/// Checks the number of lines that are cut out of a file, and the copy.
void expectStripped(const std::string& input, int lines, const std::string& copy) {
  const Sandbox dir;
  dir.write("in.step", input);
  const Outcome outcome = runIn(dir, {"in.step", "out.stl", "1e-9"});
  EXPECT_THAT(outcome.signal, AnyOf(SIGABRT, SIGSEGV));
  EXPECT_THAT(outcome.out, HasSubstr("\n[PREPROCESS] Stripped " + std::to_string(lines) +
                                     " lines -> tmp/in.step.clean.stp\n"));
  EXPECT_EQ(dir.read("tmp/in.step.clean.stp"), copy);
  EXPECT_EQ(dir.read("in.step"), input);
}

TEST(Stripping, MakesNoCopyWithoutATriggerWord) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(box(), "#500=COORDINATES_LIST('',0,());\n"));
  const Outcome outcome = runIn(dir, {"in.step", "out.stl", "1e-9"});
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_THAT(outcome.out, HasSubstr("[3] Stripping tessellation and reading BRep...\n  BRep: "));
  EXPECT_TRUE(std::filesystem::is_empty(dir / "tmp"));
}

TEST(Stripping, CopiesAFileWithATriggerWordOfAnotherKindWhole) {
  const std::string input = appendEntities(box(), "#500=TESSELLATED_SHELL('',(),$);\n");
  expectStripped(input, 0, input);
}

TEST(Stripping, KeepsEntitiesWithBlanksAroundTheEqualsSign) {
  const std::string input = appendEntities(box(), "#500 = TESSELLATED_SOLID('',(),$);\n");
  expectStripped(input, 0, input);
}

TEST(Stripping, KeepsComplexEntities) {
  const std::string input = appendEntities(box(), "#500=(TESSELLATED_SOLID('',(),$));\n");
  expectStripped(input, 0, input);
}

TEST(Stripping, CutsOutEachOfTheFourKindsAndKeepsReferencesToThem) {
  expectStripped(appendEntities(box(), paired()), 4,
                 appendEntities(box(),
                                "#500=SHAPE_REPRESENTATION('',(#11),#165);\n"
                                "#501=SHAPE_REPRESENTATION_RELATIONSHIP('','',#500,#510);\n"));
}

TEST(Stripping, CutsOutKindsWhoseNamesBeginLikeThese) {
  expectStripped(
      appendEntities(box(), "#500=TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY('',(),#165);\n"),
      1, box());
}

TEST(Stripping, CutsOutAllLinesOfAnEntity) {
  std::string list = "#500=COORDINATES_LIST('TESSELLATED_',118,(\r\n";
  for (int i = 0; i < 118; ++i) {
    list += i < 117 ? "(0.,0.,0.),\r\n" : "(0.,0.,0.)\r\n";
  }
  list += "));\r\n";
  expectStripped(appendEntities(box(), list), 120, box());
}

TEST(Stripping, GoesOnAcrossEmptyLines) {
  expectStripped(appendEntities(box(), "#500=TESSELLATED_SOLID('',\n\n\r\n(),$);\n"), 4, box());
}

TEST(Stripping, GoesOnWhenABlankFollowsTheSemicolon) {
  expectStripped(appendEntities(box(),
                                "#500=TESSELLATED_SOLID('',(),$); \n"
                                "#501=CARTESIAN_POINT('',(0.,0.,0.));\n"
                                "#502=CARTESIAN_POINT('',(0.,0.,0.));\n"),
                 2, appendEntities(box(), "#502=CARTESIAN_POINT('',(0.,0.,0.));\n"));
}

TEST(Stripping, EndsTheCopyWithALineFeed) {
  std::string input = appendEntities(box(), "#500=TESSELLATED_SOLID('',(),$);\n");
  input.pop_back();
  expectStripped(input, 1, box());
}

TEST(Stripping, NamesTheCopyAfterTheLastPartOfThePath) {
  const Sandbox dir;
  dir.makeDirectory("a");
  dir.write("a/in", appendEntities(box(), paired()));
  const std::string absolute = dir / "a/in";
  for (const std::string& input : {std::string("a/in"), std::string("./a/../a//in"), absolute}) {
    EXPECT_THAT(runIn(dir, {input, "out.stl"}).out,
                HasSubstr("[PREPROCESS] Stripped 4 lines -> tmp/in.clean.stp\n"));
  }
}

TEST(Stripping, TakesABackslashAsASeparatorToo) {
  const Sandbox dir;
  dir.write("a\\in.step", appendEntities(box(), paired()));
  EXPECT_THAT(runIn(dir, {"a\\in.step", "out.stl"}).out,
              HasSubstr("[PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp\n"));
}

}  // namespace
}  // namespace plenvorith::test
