#include "tests/corpus/corpus_files.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <Standard_Version.hxx>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "prepare/preparation.h"
#include "tests/support/captured_cout.h"
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

/// Lines of the kernel hold stars or colours, or nothing at all.
bool isKernelLine(const std::string& line) {
  return line.empty() || line.find("***") != std::string::npos ||
         line.find('\033') != std::string::npos;
}

}  // namespace

std::vector<Row> readTable(const std::string& path) {
  std::ifstream file(path);
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
  EXPECT_FALSE(rows.empty()) << "nothing in " << path;
  return rows;
}

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

int prepareQuietly(const std::string& input, const std::string& output) {
  const CapturedCout report;
  return prepareFile(input, output);
}

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

void Corpus::SetUp() {
  const char* named = std::getenv("PLENVORITH_CORPUS");
  if (named == nullptr) {
    GTEST_SKIP() << "PLENVORITH_CORPUS names no folder of STEP files";
  }
  folder = std::filesystem::absolute(named);
  rows = readTable(folder + "/INDEX.tsv");
}

}  // namespace plenvorith::test
