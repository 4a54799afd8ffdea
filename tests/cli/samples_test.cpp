// The samples. How many triangles the kernel makes of curved faces is its own affair: the
// transcripts have "*" there.

#include <algorithm>
#include <string>
#include <vector>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

/// Puts "*" in place of the number behind each of these beginnings.
std::string maskAfter(std::string text, const std::vector<std::string>& beginnings) {
  for (const std::string& beginning : beginnings) {
    for (std::size_t at = text.find(beginning); at != std::string::npos;
         at = text.find(beginning, at)) {
      at += beginning.size();
      const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
      if (end > at) {
        text.replace(at, end - at, "*");
      }
    }
  }
  return text;
}

testing::Matcher<std::string> maskedLines(const std::string& lines) {
  return testing::ResultOf(
      "with masked counts",
      [](const std::string& text) {
        return maskAfter(text, {"\n  BRep: ", "[5] Writing STL: ", "(BRep: "});
      },
      ownLines(lines));
}

/// Copies one of the samples into a directory.
void addSample(const Sandbox& dir, const std::string& name) {
  dir.write(name, readFile(std::filesystem::path(PLENVORITH_SAMPLES) / name));
}

TEST(Samples, BracketIsOneSolid) {
  const Sandbox dir;
  addSample(dir, "bracket.step");
  expectRun(dir, {"bracket.step", "out.stl"},
            {.out = maskedLines(R"(Reading: bracket.step
[1] Analyzing file structure...
  Parsed 563 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: * triangles
[5] Writing STL: * triangles (BRep: * + Tess: 0)
Saved: out.stl
Done
)"),
             .made = {"out.stl"}});
  // A plate bent to 60 x 40 x 46 mm is far from filling that block.
  const double volume = volumeOf(recordsOf(dir.read("out.stl")));
  EXPECT_GT(volume, 0.02 * 60 * 40 * 46);
  EXPECT_LT(volume, 0.5 * 60 * 40 * 46);
}

TEST(Samples, BracketHasMoreTrianglesTheFinerTheMesh) {
  const Sandbox dir;
  addSample(dir, "bracket.step");
  EXPECT_EQ(runIn(dir, {"bracket.step", "coarse.stl", "1"}).exitStatus, 0);
  EXPECT_EQ(runIn(dir, {"bracket.step", "fine.stl", "0.01"}).exitStatus, 0);
  EXPECT_GT(recordsOf(dir.read("fine.stl")).size(), recordsOf(dir.read("coarse.stl")).size());
}

TEST(Samples, AssemblySplitsIntoThreeSolidsAndAShell) {
  const Sandbox dir;
  addSample(dir, "assembly.step");
  expectRun(dir, {"assembly.step", "out.stl", "0.1", "x"},
            {.out = R"(Reading: assembly.step
[1] Analyzing file structure...
  Parsed 265 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 3, free shells: 1, free faces: 0
  Read 4 BRep shapes
  Saved: out.stl_1.stl
  Saved: out.stl_2.stl
  Saved: out.stl_3.stl
  Saved: out.stl_4.stl
Done
)",
             .made = {"out.stl_1.stl", "out.stl_2.stl", "out.stl_3.stl", "out.stl_4.stl"}});
  for (const char* name : {"out.stl_1.stl", "out.stl_2.stl", "out.stl_3.stl"}) {
    EXPECT_GT(volumeOf(recordsOf(dir.read(name))), 0) << name;
  }
  EXPECT_FALSE(recordsOf(dir.read("out.stl_4.stl")).empty());
}

TEST(Samples, AssemblySplitsIntoStepFilesToo) {
  const Sandbox dir;
  addSample(dir, "assembly.step");
  expectRun(dir, {"assembly.step", "out.step", "0.1", "x"},
            {.out = ownLines(R"(  BRep: roots=1, shapes=1
  Solids: 3, free shells: 1, free faces: 0
Saved: out.step_1.stp
Saved: out.step_2.stp
Saved: out.step_3.stp
Saved: out.step_4.stp
Done
)"),
             .made = {"out.step_1.stp", "out.step_2.stp", "out.step_3.stp", "out.step_4.stp"}});
}

TEST(Samples, TessellatedIsDecodedInFull) {
  const Sandbox dir;
  addSample(dir, "tessellated.step");
  expectRun(dir, {"tessellated.step", "out.stl"},
            {.out = R"(Reading: tessellated.step
[1] Analyzing file structure...
  Parsed 19 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
  Parsed 1536 triangles from tessellation
[5] Writing STL: 1536 triangles (BRep: 0 + Tess: 1536)
Saved: out.stl
Done
)",
             .made = {"out.stl"}});
  EXPECT_GT(volumeOf(recordsOf(dir.read("out.stl"))), 0);
}

TEST(Samples, PairedGivesTheFlangeOnce) {
  const Sandbox dir;
  addSample(dir, "paired.step");
  expectRun(dir, {"paired.step", "out.stl"},
            {.out = maskedLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 420 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 26 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: * triangles
[5] Writing STL: * triangles (BRep: * + Tess: 0)
Saved: out.stl
Done
)"),
             .made = {"out.stl"}});
  EXPECT_GT(volumeOf(recordsOf(dir.read("out.stl"))), 0);
}

TEST(Samples, PairedBecomesACleanStepFile) {
  const Sandbox dir;
  addSample(dir, "paired.step");
  expectRun(dir, {"paired.step", "clean.step"},
            {.out = ownLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 420 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
[PREPROCESS] Stripped 26 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved clean STEP (without tessellation): clean.step
Done
)"),
             .made = {"clean.step"}});
}

TEST(Samples, MixedGivesTheRingAndTheGem) {
  const Sandbox dir;
  addSample(dir, "mixed.step");
  expectRun(dir, {"mixed.step", "out.step"},
            {.out = maskedLines(R"(Reading: mixed.step
[1] Analyzing file structure...
  Parsed 69 entities
  Status: partially unique tessellation
[2] Mixed: BRep + unique tessellation. Converting all to STL...
[3] Parsing unique tessellation...
  Parsed 118 triangles from unique tessellation
[4] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
  BRep: * triangles
Saved as STL: out.stl (BRep: * + Tess: 118)
Done
)"),
             .made = {"out.stl"}});
  EXPECT_GT(recordsOf(dir.read("out.stl")).size(), 118U);
}

TEST(Samples, MixedTakesTheDeflectionToCleanStepAsWell) {
  const Sandbox dir;
  addSample(dir, "mixed.step");
  const auto trianglesAt = [&dir](const std::string& deflection) {
    EXPECT_EQ(runIn(dir, {"mixed.step", "out.stp", deflection}).exitStatus, 0);
    return recordsOf(dir.read("out.stl")).size();
  };
  EXPECT_LT(2 * trianglesAt("1"), trianglesAt("0.01"));
}

}  // namespace
}  // namespace plenvorith::test
