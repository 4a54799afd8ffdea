// Prepares the files of the folder PLENVORITH_CORPUS and converts what comes out. Its table
// PREPARED.tsv names those for which that makes a difference; its columns:
//
//   file                   the file
//   status                 what step [1] prints for the prepared file
//   brep_triangles_at_0.1  the triangles of its exact geometry, as in INDEX.tsv
//   tess_triangles         those that are decoded
//   exit                   the exit status of a conversion of the prepared file to STL
//
// All others give the very same mesh prepared and unprepared.

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

#include <gmock/gmock.h>

#include "tests/corpus/corpus_files.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

constexpr std::size_t kBytesBefore = 84;
constexpr std::size_t kBytesEach = 50;

class PreparedCorpus : public Corpus {
 protected:
  void SetUp() override {
    Corpus::SetUp();
    if (!IsSkipped() && std::filesystem::exists(folder + "/PREPARED.tsv")) {
      for (const Row& row : readTable(folder + "/PREPARED.tsv")) {
        prepared[row.at("file")] = row;
      }
    }
  }

  std::map<std::string, Row> prepared;  ///< by file
};

/// Converts a prepared file, which has to give what the row says.
void expectAsListed(const TempDir& dir, const std::string& input, const Row& row) {
  const Outcome run = runProgram(dir.path(), input, "out.stl");
  const std::size_t brep = checkedBrepTriangles(run, row);
  const std::size_t decoded = numberOrZero(row.at("tess_triangles"));
  EXPECT_NE(run.out.find("  Status: " + row.at("status") + "\n"), std::string::npos) << run.out;
  EXPECT_EQ(std::to_string(run.exitStatus), row.at("exit")) << run.err;
  EXPECT_EQ(readFile(dir / "out.stl").size(),
            brep + decoded == 0 ? 0 : kBytesBefore + kBytesEach * (brep + decoded));
}

TEST_F(PreparedCorpus, StlMatchesTheTableOrIsTheSame) {
  std::size_t listed = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const TempDir dir;
    const std::string input = folder + "/" + row.at("file");
    const std::string once = dir / "once.stp";
    const auto found = prepared.find(row.at("file"));
    const std::string exit = found == prepared.end() ? row.at("exit") : found->second.at("exit");
    const int status = prepareQuietly(input, once);
    EXPECT_TRUE(status == 0 || (status == 3 && exit == "1")) << status;
    if (found != prepared.end()) {
      ++listed;
      expectAsListed(dir, once, found->second);
    } else {
      EXPECT_EQ(runProgram(dir.path(), input, "plain.stl").exitStatus,
                runProgram(dir.path(), once, "out.stl").exitStatus);
      EXPECT_EQ(readFile(dir / "out.stl"), readFile(dir / "plain.stl"));
    }
    EXPECT_EQ(prepareQuietly(once, dir / "twice.stp"), status);
    (void)runProgram(dir.path(), dir / "twice.stp", "twice.stl");
    EXPECT_EQ(readFile(dir / "twice.stl"), readFile(dir / "out.stl")) << "prepared twice";
  }
  EXPECT_EQ(listed, prepared.size()) << "PREPARED.tsv names a file that INDEX.tsv does not name";
}

TEST_F(PreparedCorpus, ExactGeometryIsUntouched) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const TempDir dir;
    const ScopedTmpdir tmpdir(dir.path());
    const std::string input = folder + "/" + row.at("file");
    const ExactGeometry before = exactGeometryOrNone(input);
    if (before.area == 0.0) {
      continue;
    }
    const std::string output = dir / "ready.stp";
    EXPECT_EQ(prepareQuietly(input, output), 0);
    expectUntouchedGeometry(exactGeometryIn(output), before);
  }
}

}  // namespace
}  // namespace plenvorith::test
