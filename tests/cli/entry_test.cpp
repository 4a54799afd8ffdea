// The command line: how many arguments, which extension, which deflection.

#include <string>
#include <tuple>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

constexpr const char* kSquareToStl = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
  Parsed 2 triangles from tessellation
[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)
)";

constexpr const char* kSquareToCleanStep = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
[2] No BRep geometry, only tessellation. Converting to STL...
  Parsed 2 triangles
)";

/// What the STL pipeline prints for the square and this output path.
std::string stlTranscript(const std::string& output) {
  return kSquareToStl + ("Saved: " + output + "\nDone\n");
}

/// What the clean-STEP pipeline prints for the square that went to this path.
std::string cleanStepTranscript(const std::string& stlPath) {
  return kSquareToCleanStep + ("Saved as STL (tessellation only): " + stlPath + "\nDone\n");
}

TEST(Entry, SaysNothingForFewerThanTwoArguments) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {}, {.exitStatus = 1});
  expectRun(dir, {"in.step"}, {.exitStatus = 1});
}

using OutputName = testing::TestWithParam<const char*>;

TEST_P(OutputName, WithStlAsExtensionInAnyCaseIsWrittenAsGiven) {
  const Sandbox dir;
  const std::string output = GetParam();
  dir.write("in.step", stepFile(unique()));
  dir.makeDirectory("dir.step");
  expectRun(dir, {"in.step", output}, {.out = stlTranscript(output), .made = {output}});
  EXPECT_EQ(dir.read(output), stlFile(kUniqueTriangles));
}

INSTANTIATE_TEST_SUITE_P(, OutputName,
                         testing::Values("out.stl", "out.STL", "a.b.Stl", "out.step.stl", ".stl",
                                         "stl", "STL", "dir.step/out.stl", " .stl", "-.stl"));

using StepName = testing::TestWithParam<std::tuple<const char*, const char*>>;

TEST_P(StepName, RunsTheCleanStepPipeline) {
  const Sandbox dir;
  const auto& [output, stlPath] = GetParam();
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {"in.step", output}, {.out = cleanStepTranscript(stlPath), .made = {stlPath}});
  EXPECT_EQ(dir.read(stlPath), stlFile(kUniqueTriangles));
}

INSTANTIATE_TEST_SUITE_P(
    , StepName,
    testing::Values(std::tuple("out.step", "out.stl"), std::tuple("out.stp", "out.stl"),
                    std::tuple("out.Step", "out.stl"), std::tuple("out.STP", "out.stl"),
                    std::tuple("a.b.step", "a.b.stl"), std::tuple(".stp", ".stl"),
                    std::tuple("step", "step.stl"), std::tuple("STP", "STP.stl")));

using OtherName = testing::TestWithParam<std::tuple<const char*, const char*>>;

TEST_P(OtherName, IsRejectedWithItsExtensionInLowerCase) {
  const Sandbox dir;
  const auto& [output, extension] = GetParam();
  dir.write("in.step", stepFile(unique()));
  dir.makeDirectory("dir.old");
  expectRun(dir, {"in.step", output},
            {.err = std::string("Unsupported format: ") + extension + "\n", .exitStatus = 1});
}

INSTANTIATE_TEST_SUITE_P(
    , OtherName,
    testing::Values(std::tuple("out.OBJ", "obj"), std::tuple("out", "out"),
                    std::tuple("Out", "out"), std::tuple("dir.old/out", "old/out"),
                    std::tuple("dir.old/STL", "old/stl"), std::tuple("dir/stl", "dir/stl"),
                    std::tuple("out.", ""), std::tuple("out.stl.", ""), std::tuple("", ""),
                    std::tuple("out.stl ", "stl "), std::tuple("out.stlx", "stlx"),
                    std::tuple("out.st", "st"), std::tuple("out.stpz", "stpz"),
                    std::tuple("out.\xC3\x84", "\xC3\x84")));

TEST(Entry, DoesNotLookAtTheInputBeforeTheExtension) {
  const Sandbox dir;
  expectRun(dir, {"missing", "out.obj"}, {.err = "Unsupported format: obj\n", .exitStatus = 1});
}

/// An argument, and how the transcript shows the deflection that it gives.
using DeflectionArgument = testing::TestWithParam<std::tuple<const char*, const char*>>;

TEST_P(DeflectionArgument, GivesTheDeflectionShown) {
  const Sandbox dir;
  const auto& [argument, shown] = GetParam();
  dir.write("in.step", box());
  expectRun(dir, {"in.step", "out.stl", argument},
            {.out = std::string(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=)") +
                    shown + R"()...
  BRep: 12 triangles
[5] Writing STL: 12 triangles (BRep: 12 + Tess: 0)
Saved: out.stl
Done
)",
             .made = {"out.stl"}});
}

INSTANTIATE_TEST_SUITE_P(
    , DeflectionArgument,
    testing::Values(std::tuple("0.1", "0.1"), std::tuple("0.5", "0.5"), std::tuple("0.25", "0.25"),
                    std::tuple("1e-3", "0.001"), std::tuple("0", "0.1"), std::tuple("-0", "0.1"),
                    std::tuple("-1", "0.1"), std::tuple("-inf", "0.1"), std::tuple("abc", "0.1"),
                    std::tuple("", "0.1"), std::tuple("0,5", "0.1"), std::tuple("0.5mm", "0.5"),
                    std::tuple(" 0.5", "0.5"), std::tuple("0x1p-1", "0.5"), std::tuple("2", "2"),
                    std::tuple("1234567", "1.23457e+06"), std::tuple("0.123456789", "0.123457"),
                    std::tuple("nan", "nan"), std::tuple("inf", "inf")));

TEST(Entry, SplitsForAnyFourthArgument) {
  for (const char* argument : {"x", "0", "false", "", "-"}) {
    SCOPED_TRACE(argument);
    const Sandbox dir;
    dir.write("in.step", box());
    expectRun(dir, {"in.step", "out.stl", "0.2", argument},
              {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
  Saved: out.stl_1.stl
Done
)",
               .made = {"out.stl_1.stl"}});
  }
}

TEST(Entry, IgnoresWhatFollowsTheFourthArgument) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {"in.step", "out.stl", "0.2", "x", "y", "--help"},
            {.out = stlTranscript("out.stl"), .made = {"out.stl"}});
}

TEST(Entry, TakesTheInputWhateverItsName) {
  const Sandbox dir;
  dir.write("in", stepFile(unique()));
  std::string transcript = stlTranscript("out.stl");
  transcript.erase(transcript.find(".step"), 5);
  expectRun(dir, {"in", "out.stl"}, {.out = transcript, .made = {"out.stl"}});
}

}  // namespace
}  // namespace plenvorith::test
