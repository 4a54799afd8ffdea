// The output extension "stl": the four routes, split mode, and what is left of each.

#include <string>

#include "tests/cli/expect_run.h"
#include "tests/cli/inputs.h"

namespace plenvorith::test {
namespace {

TEST(ToStl, WritesTheTrianglesOfExactGeometry) {
  const Sandbox dir;
  dir.write("box.step", box());
  expectRun(dir, {"box.step", "out.stl"},
            {.out = R"(Reading: box.step
[1] Analyzing file structure...
  Parsed 170 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 12 triangles
[5] Writing STL: 12 triangles (BRep: 12 + Tess: 0)
Saved: out.stl
Done
)",
             .made = {"out.stl"}});
  const std::vector<StlRecord> records = recordsOf(dir.read("out.stl"));
  EXPECT_EQ(records.size(), 12U);
  EXPECT_EQ(volumeOf(records), 6000);
}

TEST(ToStl, IgnoresTessellationThatIsPaired) {
  const Sandbox dir;
  dir.write("paired.step", appendEntities(box(), paired()));
  expectRun(dir, {"paired.step", "out.stl"},
            {.out = ownLines(R"(Reading: paired.step
[1] Analyzing file structure...
  Parsed 176 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 4 lines -> tmp/paired.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 12 triangles
[5] Writing STL: 12 triangles (BRep: 12 + Tess: 0)
Saved: out.stl
Done
)"),
             .made = {"out.stl"}});
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl"))), 6000);
}

TEST(ToStl, PutsUniqueTessellationBehindExactGeometry) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "out.stl"},
            {.out = ownLines(R"(Reading: mixed.step
[1] Analyzing file structure...
  Parsed 180 entities
  Status: partially unique tessellation
  Paired tess representations: 1
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 12 triangles
[5] Writing STL: 14 triangles (BRep: 12 + Tess: 2)
Saved: out.stl
Done
)"),
             .made = {"out.stl"}});
  std::vector<StlRecord> records = recordsOf(dir.read("out.stl"));
  ASSERT_EQ(records.size(), 14U);
  EXPECT_EQ(std::vector(records.end() - 2, records.end()), kUniqueTriangles);
  records.resize(12);
  EXPECT_EQ(volumeOf(records), 6000);
}

constexpr const char* kUnpairedTranscript = R"(Reading: unpaired.step
[1] Analyzing file structure...
  Parsed 174 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing all tessellation (no BRep in file)...
  Parsed 2 triangles from tessellation
[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)
Saved: out.stl
Done
)";

TEST(ToStl, LeavesOutExactGeometryThatNoTessellationIsPairedWith) {
  const Sandbox dir;
  dir.write("unpaired.step", appendEntities(box(), unique()));
  expectRun(dir, {"unpaired.step", "out.stl"}, {.out = kUnpairedTranscript, .made = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile(kUniqueTriangles));
}

TEST(ToStl, DoesNotSplitWhatHasTessellationOnly) {
  const Sandbox dir;
  dir.write("unpaired.step", appendEntities(box(), unique()));
  expectRun(dir, {"unpaired.step", "out.stl", "0.1", "x"},
            {.out = kUnpairedTranscript, .made = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile(kUniqueTriangles));
}

TEST(ToStl, DecodesAllFacesOfTessellationOnlyWhetherOrNotASolidHoldsThem) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"
                                "#6=COMPLEX_TRIANGULATED_FACE('',#7,3,(),$,(),((1,2,3)),());\n"
                                "#7=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 3 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 0
[2] Parsing all tessellation (no BRep in file)...
  Parsed 1 triangles from tessellation
[5] Writing STL: 1 triangles (BRep: 0 + Tess: 1)
Saved: out.stl
Done
)",
             .made = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile({{0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0}}));
}

TEST(ToStl, RejectsTessellationWithoutTriangles) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#5=TESSELLATED_SHAPE_REPRESENTATION('',(#6),#2);\n"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 1 entities
  Status: tessellation only (no BRep)
  Paired tess representations: 0
  Unique tess representations: 1
  Unique tess faces to parse: 0
[2] Parsing all tessellation (no BRep in file)...
  Parsed 0 triangles from tessellation
Failed
)",
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1});
}

TEST(ToStl, RejectsAFileWithoutAnyGeometry) {
  const Sandbox dir;
  dir.write("in.step", stepFile("#1=FOO;\n"));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLinesWithoutGeometry(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 1 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
(refused or empty)
  No BRep geometry found
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1});
}

TEST(ToStl, RejectsPairedTessellationWhoseExactGeometryIsMissing) {
  const Sandbox dir;
  dir.write("in.step", stepFile(paired()));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 6 entities
  Status: all tessellation paired with BRep
  Paired tess representations: 1
  Unique tess representations: 0
  Unique tess faces to parse: 0
[2] All tessellation duplicates BRep, will use BRep only
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 4 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
  No BRep geometry found
Failed
)"),
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1});
}

TEST(ToStl, RejectsCurvesAlone) {
  const Sandbox dir;
  dir.write("line.step", dataFile("line.step"));
  expectRun(dir, {"line.step", "out.stl"},
            {.out = R"(Reading: line.step
[1] Analyzing file structure...
  Parsed 28 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 0, free shells: 0, free faces: 0
  Read 1 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 0 triangles
Failed
)",
             .err = "Error: No geometry found in file\n",
             .exitStatus = 1});
}

/// The mixed file without its exact geometry, whether or not it is to be split.
constexpr const char* kMissingExactTranscript = R"(Reading: in.step
[1] Analyzing file structure...
  Parsed 10 entities
  Status: partially unique tessellation
  Paired tess representations: 1
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/in.step.clean.stp
  BRep: roots=0, shapes=0
  No BRep geometry found
[5] Writing STL: 2 triangles (BRep: 0 + Tess: 2)
Saved: out.stl
Done
)";

TEST(ToStl, WritesUniqueTessellationAloneWhenExactGeometryIsMissing) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(stepFile(paired()), unique()));
  expectRun(dir, {"in.step", "out.stl"},
            {.out = ownLines(kMissingExactTranscript), .made = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile(kUniqueTriangles));
}

TEST(ToStl, DoesNotSplitWhenExactGeometryIsMissing) {
  const Sandbox dir;
  dir.write("in.step", appendEntities(stepFile(paired()), unique()));
  expectRun(dir, {"in.step", "out.stl", "0.1", "x"},
            {.out = ownLines(kMissingExactTranscript), .made = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile(kUniqueTriangles));
}

TEST(ToStl, WritesSolidsAndFreeShellsTogether) {
  const Sandbox dir;
  dir.write("parts.step", dataFile("parts.step"));
  expectRun(dir, {"parts.step", "out.stl"},
            {.out = R"(Reading: parts.step
[1] Analyzing file structure...
  Parsed 539 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 2, free shells: 1, free faces: 0
  Read 3 BRep shapes
[4] Meshing BRep (deflection=0.1)...
  BRep: 36 triangles
[5] Writing STL: 36 triangles (BRep: 36 + Tess: 0)
Saved: out.stl
Done
)",
             .made = {"out.stl"}});
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl"))), 6000 + 125 + 125);
}

TEST(ToStl, SplitWritesOneFileForEachShape) {
  const Sandbox dir;
  dir.write("parts.step", dataFile("parts.step"));
  expectRun(dir, {"parts.step", "out.stl", "0.1", "x"},
            {.out = R"(Reading: parts.step
[1] Analyzing file structure...
  Parsed 539 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 2, free shells: 1, free faces: 0
  Read 3 BRep shapes
  Saved: out.stl_1.stl
  Saved: out.stl_2.stl
  Saved: out.stl_3.stl
Done
)",
             .made = {"out.stl_1.stl", "out.stl_2.stl", "out.stl_3.stl"}});
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl_1.stl"))), 6000);
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl_2.stl"))), 125);
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.stl_3.stl"))), 125);
}

constexpr const char* kMixedSplitStart = R"(Reading: mixed.step
[1] Analyzing file structure...
  Parsed 180 entities
  Status: partially unique tessellation
  Paired tess representations: 1
  Unique tess representations: 1
  Unique tess faces to parse: 1
[2] Parsing unique tessellation...
  Parsed 2 triangles from unique tessellation
[3] Stripping tessellation and reading BRep...
[PREPROCESS] Stripped 8 lines -> tmp/mixed.step.clean.stp
  BRep: roots=1, shapes=1
  Solids: 1, free shells: 0, free faces: 0
  Read 1 BRep shapes
)";

TEST(ToStl, SplitWritesUniqueTessellationToAFileOfItsOwn) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "out.STL", "0.1", "x"},
            {.out = ownLines(std::string(kMixedSplitStart) + R"(  Saved: out.STL_1.stl
  Saved tessellation: out.STL_tess.stl
Done
)"),
             .made = {"out.STL_1.stl", "out.STL_tess.stl"}});
  EXPECT_EQ(volumeOf(recordsOf(dir.read("out.STL_1.stl"))), 6000);
  EXPECT_EQ(dir.read("out.STL_tess.stl"), stlFile(kUniqueTriangles));
}

TEST(ToStl, SplitReportsFilesThatCouldNotBeWritten) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  expectRun(dir, {"mixed.step", "missing/out.stl", "0.1", "x"},
            {.out = ownLines(std::string(kMixedSplitStart) + R"(  Saved: missing/out.stl_1.stl
  Saved tessellation: missing/out.stl_tess.stl
Done
)"),
             .err = "Error: Cannot open missing/out.stl_tess.stl for writing\n"});
}

TEST(ToStl, SplitReportsAShapeWithoutFaces) {
  const Sandbox dir;
  dir.write("line.step", dataFile("line.step"));
  expectRun(dir, {"line.step", "out.stl", "0.1", "x"}, {.out = R"(Reading: line.step
[1] Analyzing file structure...
  Parsed 28 entities
  Status: no tessellation
[3] Stripping tessellation and reading BRep...
  BRep: roots=1, shapes=1
  Solids: 0, free shells: 0, free faces: 0
  Read 1 BRep shapes
  Saved: out.stl_1.stl
Done
)"});
}

TEST(ToStl, WritesTheSameBytesEachTime) {
  const Sandbox dir;
  dir.write("mixed.step", appendEntities(appendEntities(box(), paired()), unique()));
  EXPECT_EQ(runIn(dir, {"mixed.step", "a.stl"}).exitStatus, 0);
  EXPECT_EQ(runIn(dir, {"mixed.step", "b.stl"}).exitStatus, 0);
  EXPECT_EQ(dir.read("a.stl"), dir.read("b.stl"));
}

TEST(ToStl, ReplacesAnExistingFile) {
  const Sandbox dir;
  dir.write("unpaired.step", appendEntities(box(), unique()));
  dir.write("out.stl", std::string(1000, 'x'));
  expectRun(dir, {"unpaired.step", "out.stl"},
            {.out = kUnpairedTranscript, .overwritten = {"out.stl"}});
  EXPECT_EQ(dir.read("out.stl"), stlFile(kUniqueTriangles));
}

}  // namespace
}  // namespace plenvorith::test
