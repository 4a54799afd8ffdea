// Runs the program on a folder of STEP files, PLENVORITH_CORPUS, and compares what it prints and
// writes with the folder's INDEX.tsv. Its columns, separated by tabs, under a line of their names:
//
//   file, bytes, schema          the file, its size, the name in its header
//   entities, status             what step [1] prints
//   paired, unique, unique_faces the three counts below it; "-" where the file has no tessellation
//   tess_triangles               the triangles that are decoded; "-" where none are looked for
//   roots, shapes                what the kernel reads; "-" where it is not asked
//   solids, free_shells, free_faces   the pieces of that; "-" where there is none
//   brep_triangles_at_0.1        its triangles at the deflection 0.1 with release 7.6 of the kernel
//   exit                         the exit status of a conversion to STL
//
// Others (origin, licence) are for people.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "tests/corpus/corpus_files.h"
#include "tests/corpus/expected_transcript.h"
#include "tests/support/dir_listing.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

void expectRun(const Outcome& run, const Expected& expected) {
  EXPECT_EQ(run.out, expected.out);
  EXPECT_EQ(run.err, expected.err);
  EXPECT_EQ(run.exitStatus, expected.exitStatus);
}

std::string withoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
  return text;
}

TEST_F(Corpus, FilesAreThoseOfTheIndex) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const std::string text = readFile(folder + "/" + row.at("file"));
    EXPECT_EQ(std::to_string(text.size()), row.at("bytes"));
    EXPECT_NE(withoutBlanks(text).find(withoutBlanks(row.at("schema"))), std::string::npos);
  }
}

TEST_F(Corpus, StlMatchesTheIndex) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const TempDir dir;
    const std::string input = folder + "/" + row.at("file");
    const Outcome run = runProgram(dir.path(), input, "out.stl");
    const std::size_t brepTriangles = checkedBrepTriangles(run, row);
    const Expected expected = expectedForStl(row, input, brepTriangles);
    expectRun(run, expected);
    if (row.at("status") != "no tessellation") {
      EXPECT_EQ(run.stripped, row.at("status") != "tessellation only (no BRep)");
    }
    EXPECT_EQ(std::to_string(run.exitStatus), row.at("exit"));
    const std::size_t triangles = brepTriangles + numberOrZero(row.at("tess_triangles"));
    EXPECT_EQ(readFile(dir / "out.stl").size(), triangles == 0 ? 0 : 84 + 50 * triangles);
    std::filesystem::remove(dir / "out.stl");
    EXPECT_THAT(namesIn(dir.path()), testing::ElementsAre("stderr", "stdout"));
  }
}

TEST_F(Corpus, CleanStepMatchesTheIndexAndKeepsTheGeometry) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const TempDir dir;
    const ScopedTmpdir tmpdir(dir.path());
    const std::string input = folder + "/" + row.at("file");
    const Outcome run = runProgram(dir.path(), input, "out.step");
    const bool mixed = row.at("status") == "partially unique tessellation";
    const bool paired = row.at("status") == "all tessellation paired with BRep";
    const Expected expected =
        expectedForStep(row, input, mixed ? checkedBrepTriangles(run, row) : 0);
    expectRun(run, expected);
    EXPECT_EQ(run.stripped, mixed || paired);
    const bool cleanStep = expected.exitStatus == 0 && numberOrZero(row.at("unique")) == 0;
    EXPECT_EQ(std::filesystem::exists(dir / "out.step"), cleanStep);
    if (!cleanStep) {
      continue;
    }
    EXPECT_EQ(runProgram(dir.path(), dir / "out.step", "twice.step").exitStatus, 0);
    const ExactGeometry geometry = exactGeometryIn(input);
    for (const char* output : {"out.step", "twice.step"}) {
      SCOPED_TRACE(output);
      expectNoTessellatedType(dir / output);
      expectSameGeometry(exactGeometryIn(dir / output), geometry);
    }
  }
}

}  // namespace
}  // namespace plenvorith::test
