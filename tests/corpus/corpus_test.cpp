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
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <Standard_Version.hxx>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/corpus/expected_transcript.h"
#include "tests/support/dir_listing.h"
#include "tests/support/exact_geometry.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) {
    fields.push_back(field);
  }
  return fields;
}

std::vector<Row> readIndex(const std::string& folder) {
  std::ifstream file(folder + "/INDEX.tsv");
  std::string line;
  std::getline(file, line);
  const std::vector<std::string> names = fieldsOf(line);
  std::vector<Row> rows;
  while (std::getline(file, line)) {
    const std::vector<std::string> fields = fieldsOf(line);
    EXPECT_EQ(fields.size(), names.size()) << line;
    Row row;
    for (std::size_t i = 0; i < std::min(names.size(), fields.size()); ++i) {
      row[names[i]] = fields[i];
    }
    rows.push_back(row);
  }
  EXPECT_FALSE(rows.empty()) << "no INDEX.tsv, or nothing in it";
  return rows;
}

struct Outcome {
  int exitStatus = -1;
  std::string out;  ///< Without the lines of the kernel and that of the temporary copy.
  std::string err;
  bool stripped = false;  ///< Whether a temporary copy was made.
};

/// Lines of the kernel hold stars or colours, or nothing at all.
bool isKernelLine(const std::string& line) {
  return line.empty() || line.find("***") != std::string::npos ||
         line.find('\033') != std::string::npos;
}

/// Runs the program in `directory`, which is its directory for temporary files as well.
Outcome runProgram(const std::string& directory, const std::string& input,
                   const std::string& output) {
  const pid_t child = fork();
  if (child == 0) {
    constexpr int kCreate = O_WRONLY | O_CREAT | O_TRUNC;
    if (chdir(directory.c_str()) != 0 || dup2(open("stdout", kCreate, 0600), STDOUT_FILENO) < 0 ||
        dup2(open("stderr", kCreate, 0600), STDERR_FILENO) < 0) {
      _exit(126);
    }
    setenv("TMPDIR", directory.c_str(), 1);
    execl(PLENVORITH_PROGRAM, PLENVORITH_PROGRAM, input.c_str(), output.c_str(), nullptr);
    _exit(127);
  }
  Outcome run;
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) {
    run.exitStatus = WEXITSTATUS(status);
  }
  std::istringstream out(readFile(directory + "/stdout"));
  for (std::string line; std::getline(out, line);) {
    if (line.rfind("[PREPROCESS] Stripped ", 0) == 0) {
      run.stripped = true;
    } else if (!isKernelLine(line)) {
      run.out += line + "\n";
    }
  }
  run.err = readFile(directory + "/stderr");
  return run;
}

void expectRun(const Outcome& run, const Expected& expected) {
  EXPECT_EQ(run.out, expected.out);
  EXPECT_EQ(run.err, expected.err);
  EXPECT_EQ(run.exitStatus, expected.exitStatus);
}

/// How many triangles a run reports for the exact geometry, compared with those of the row.
std::size_t checkedBrepTriangles(const Outcome& run, const Row& row) {
  const std::string end = " triangles\n";
  std::size_t count = 0;
  for (std::size_t line = run.out.find("  BRep: "); line != std::string::npos;
       line = run.out.find("  BRep: ", line + 1)) {
    const std::size_t digits = line + 8;
    const std::size_t length = run.out.find_first_not_of("0123456789", digits) - digits;
    if (length > 0 && run.out.compare(digits + length, end.size(), end) == 0) {
      count = std::stoul(run.out.substr(digits, length));
    }
  }
  const std::size_t listed = numberOrZero(row.at("brep_triangles_at_0.1"));
#if OCC_VERSION_MAJOR == 7 && OCC_VERSION_MINOR == 6
  EXPECT_EQ(count, listed);
#else
  EXPECT_NEAR(static_cast<double>(count), static_cast<double>(listed),
              0.2 * static_cast<double>(listed));
#endif
  return count;
}

std::string withoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
  return text;
}

class Corpus : public testing::Test {
 protected:
  void SetUp() override {
    const char* named = std::getenv("PLENVORITH_CORPUS");
    if (named == nullptr) {
      GTEST_SKIP() << "PLENVORITH_CORPUS names no folder of STEP files";
    }
    folder = std::filesystem::absolute(named);
    rows = readIndex(folder);
  }

  std::string folder;
  std::vector<Row> rows;
};

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
