// The output extensions "step" and "stp": the four routes, split mode, and what is left of each.

#include <string>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Checks that a file is a STEP file with this volume in it, and no tessellation.
void expectCleanStep(const Sandbox& dir, const std::string& path, double volume) {
  const std::string file = dir.read(path);
  EXPECT_THAT(file, StartsWith("ISO-10303-21;"));
  EXPECT_THAT(file, Not(HasSubstr("TESSELLATED_")));
  EXPECT_THAT(file, Not(HasSubstr("TRIANGULATED_")));
  const Sandbox again;
  again.write("in.step", file);
  EXPECT_EQ(runIn(again, {"in.step", "out.stl"}).exitStatus, 0);
  EXPECT_EQ(volumeOf(recordsOf(again.read("out.stl"))), volume);
}

TEST(ToCleanStep, RewritesExactGeometry) {
  const Sandbox dir;
  dir.write("box.step", box());
  expectRun(dir, {"box.step", "out.step"},
            {.out = ownLines(R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved: out.step
Done
)"),
             .made = {"out.step"}});
  expectCleanStep(dir, "out.step", 6000);
}

TEST(ToCleanStep, MakesNoCopyWhenTheAnalysisFindsNoTessellation) {
  const Sandbox dir;
  dir.write("box.step", "/* TESSELLATED_SOLID */\n" + box());
  expectRun(dir, {"box.step", "out.stp"},
            {.out = ownLines(R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved: out.stp
Done
)"),
             .made = {"out.stp"}},
            {.environment = {"TMPDIR=missing"}});
  expectCleanStep(dir, "out.stp", 6000);
}

TEST(ToCleanStep, WritesAllShapesToOneFile) {
  const Sandbox dir;
  dir.write("parts.step", dataFile("parts.step"));
  expectRun(dir, {"parts.step", "out.STP"},
            {.out = ownLines(R"(Reading: parts.step
[1] Analyzing file structure...
  Parsed 539 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 2, free shells: 1, free faces: 0
Saved: out.STP
Done
)"),
             .made = {"out.STP"}});
  expectCleanStep(dir, "out.STP", 6000 + 125 + 125);
}

TEST(ToCleanStep, WritesCurvesAlone) {
  const Sandbox dir;
  dir.write("line.step", dataFile("line.step"));
  expectRun(dir, {"line.step", "out.step"},
            {.out = ownLines(R"(Reading: line.step
[1] Analyzing file structure...
  Parsed 28 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 0, free shells: 0, free faces: 0
Saved: out.step
Done
)"),
             .made = {"out.step"}});
  EXPECT_THAT(dir.read("out.step"), HasSubstr("TRIMMED_CURVE"));
}

TEST(ToCleanStep, CutsOutTessellationThatIsPaired) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "clean.step"},
            {.out = ownLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
[PREPROCESS] Stripped 4 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved clean STEP (without tessellation): clean.step
Done
)"),
             .made = {"clean.step"}});
  expectCleanStep(dir, "clean.step", 6000);
}

TEST(ToCleanStep, TurnsTessellationAloneIntoStl) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {"in.step", "model.stp"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
[2] No BRep geometry, only tessellation. Converting to STL...
  Parsed 2 triangles
Saved as STL (tessellation only): model.stl
Done
)",
             .made = {"model.stl"}});
  EXPECT_EQ(dir.read("model.stl"), stlFile(kUniqueTriangles));
}

TEST(ToCleanStep, TurnsMixedGeometryIntoStl) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "a.b.step"},
            {.out = ownLines(R"(Reading: mixed.step
[1] Analyzing file structure...
  Parsed 180 entities
  Status: partially unique tessellation
[2] Mixed: BRep + unique tessellation. Converting all to STL...
[3] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[4] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
  BRep: 12 triangles
Saved as STL: a.b.stl (BRep: 12 + Tess: 2)
Done
)"),
             .made = {"a.b.stl"}});
  std::vector<StlRecord> records = recordsOf(dir.read("a.b.stl"));
  ASSERT_EQ(records.size(), 14U);
  EXPECT_EQ(std::vector(records.end() - 2, records.end()), kUniqueTriangles);
  records.resize(12);
  EXPECT_EQ(volumeOf(records), 6000);
}

TEST(ToCleanStep, WritesAFileNamedStepForTheOutputStep) {
  const Sandbox dir;
  dir.write("box", box());
  expectRun(dir, {"box", "step"},
            {.out = ownLines(R"(Reading: box
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved: step
Done
)"),
             .made = {"step"}});
  expectCleanStep(dir, "step", 6000);
}

TEST(ToCleanStep, WritesUniqueTessellationAloneWhenExactGeometryIsMissing) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(stepFile(paired()), unique()));
  expectRun(dir, {"in.step", "step"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 10 entities
  Status: partially unique tessellation
[2] Mixed: BRep + unique tessellation. Converting all to STL...
[3] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[4] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
Saved as STL: step.stl (BRep: 0 + Tess: 2)
Done
)"),
             .made = {"step.stl"}});
  EXPECT_EQ(dir.read("step.stl"), stlFile(kUniqueTriangles));
}

TEST(ToCleanStep, RejectsAFileWithoutAnyGeometry) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#1=FOO;\n"));
  expectRun(dir, {"in.step", "out.step"},
            {.out = ownLinesWithoutGeometry(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 1 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
(refused or empty)
Failed
)"),
             .err = "Failed to read STEP\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsPairedTessellationWhoseExactGeometryIsMissing) {
  const Sandbox dir;
  dir.write("in.step", stepFile(paired()));
  expectRun(dir, {"in.step", "out.step"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 6 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
[PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
Failed
)"),
             .err = "Failed to read BRep\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsTessellationWithoutTriangles) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"));
  expectRun(dir, {"in.step", "out.step"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 1 entities
  Status: tessellation only (no BRep)
[2] No BRep geometry, only tessellation. Converting to STL...
  Parsed 0 triangles
Failed
)",
             .err = "No triangles found in tessellation\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsMixedGeometryWithoutAnyTriangles) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(stepFile(paired()),
                                      "#520=TESSELLATED_SHAPE_REPRESENTATION('',(#521),#165);\n"));
  expectRun(dir, {"in.step", "out.step"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 7 entities
  Status: partially unique tessellation
[2] Mixed: BRep + unique tessellation. Converting all to STL...
[3] Parsing unique tessellation...
  Parsed 0 triangles from unique tessellation
[4] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 5 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
Failed
)"),
             .err = "Failed to write STL\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsAnOutputInAMissingDirectory) {
  const Sandbox dir;
  dir.write("box.step", box());
  expectRun(dir, {"box.step", "missing/out.step"},
            {.out = ownLines(R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[2] No tessellation, saving clean STEP...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Failed
)"),
             .err = "Failed to write STEP\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsAnOutputInAMissingDirectoryForPairedTessellation) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "missing/out.step"},
            {.out = ownLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
[2] All tessellation duplicates BRep, stripping...
[PREPROCESS] Stripped 4 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Failed
)"),
             .err = "Failed to write STEP\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsAnOutputInAMissingDirectoryForTessellationAlone) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(dir, {"in.step", "missing/out.step"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 4 entities
  Status: tessellation only (no BRep)
[2] No BRep geometry, only tessellation. Converting to STL...
  Parsed 2 triangles
Failed
)",
             .err = "Error: Cannot open missing/out.stl for writing\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, RejectsAnOutputInAMissingDirectoryForMixedGeometry) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "missing/out.step"},
            {.out = ownLines(R"(Reading: mixed.step
[1] Analyzing file structure...
  Parsed 180 entities
  Status: partially unique tessellation
[2] Mixed: BRep + unique tessellation. Converting all to STL...
[3] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[4] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
  BRep: 12 triangles
Failed
)"),
             .err = "Error: Cannot open missing/out.stl for writing\nFailed to write STL\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, SplitWritesOneFileForEachShape) {
  const Sandbox dir;
  dir.write("parts.step", dataFile("parts.step"));
  expectRun(dir, {"parts.step", "model.step", "0.1", "x"},
            {.out = ownLines(R"(  BRep: roots=1, shapes=1
  Solids: 2, free shells: 1, free faces: 0
Saved: model.step_1.stp
Saved: model.step_2.stp
Saved: model.step_3.stp
Done
)"),
             .made = {"model.step_1.stp", "model.step_2.stp", "model.step_3.stp"}});
  expectCleanStep(dir, "model.step_1.stp", 6000);
  expectCleanStep(dir, "model.step_2.stp", 125);
  expectCleanStep(dir, "model.step_3.stp", 125);
}

TEST(ToCleanStep, SplitLeavesOutTessellationUniqueOrNot) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "out.stp", "0.1", "x"},
            {.out = ownLines(R"([PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved: out.stp_1.stp
Done
)"),
             .made = {"out.stp_1.stp"}});
  expectCleanStep(dir, "out.stp_1.stp", 6000);
}

TEST(ToCleanStep, SplitWritesExactGeometryThatNoTessellationIsPairedWith) {
  const Sandbox dir;
  dir.write("unpaired.step", appendEntities(box(), unique()));
  expectRun(dir, {"unpaired.step", "STEP", "0.1", "x"},
            {.out = ownLines(R"([PREPROCESS] Stripped 4 lines -> tmp/unpaired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
Saved: STEP_1.stp
Done
)"),
             .made = {"STEP_1.stp"}});
  expectCleanStep(dir, "STEP_1.stp", 6000);
}

TEST(ToCleanStep, SplitRejectsTessellationAlone) {
  const Sandbox dir;
  dir.write("in.step", stepFile(unique()));
  expectRun(
      dir, {"in.step", "out.step", "0.1", "x"},
      {.out = ownLinesWithoutGeometry(R"([PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
(refused or empty)
Failed
)"),
       .err = "Failed to read BRep from STEP\n",
       .exitStatus = 1});
}

TEST(ToCleanStep, SplitRejectsAFileThatTransfersNothing) {
  const Sandbox dir;
  dir.write("in.step", stepFile(paired()));
  expectRun(dir, {"in.step", "out.step", "0.1", "x"},
            {.out = ownLines(R"([PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
Failed
)"),
             .err = "Failed to read BRep from STEP\n",
             .exitStatus = 1});
}

TEST(ToCleanStep, SplitSucceedsWithoutWritingAnyFile) {
  const Sandbox dir;
  dir.write("parts.step", dataFile("parts.step"));
  expectRun(dir, {"parts.step", "missing/out.step", "0.1", "x"},
            {.out = ownLines(R"(  BRep: roots=1, shapes=1
  Solids: 2, free shells: 1, free faces: 0
Done
)")});
}

}  // namespace
}  // namespace plenvorith::test
