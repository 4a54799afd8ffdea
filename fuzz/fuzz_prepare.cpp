// Input: the content of a STEP file, prepared, and what comes of that prepared once more.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "prepare/preparation.h"
#include "steptext/entity_table.h"
#include "tessellation/face_decoder.h"
#include "tests/reference/reference_statements.h"
#include "tests/support/captured_cout.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// Keeps what is printed as errors.
class CapturedCerr {
 public:
  CapturedCerr() : before_(std::cerr.rdbuf(captured_.rdbuf())) {}
  ~CapturedCerr() {
    std::cerr.rdbuf(before_);
  }
  CapturedCerr(const CapturedCerr&) = delete;
  CapturedCerr& operator=(const CapturedCerr&) = delete;

 private:
  std::ostringstream captured_;
  std::streambuf* before_;
};

struct Prepared {
  int exitStatus = -1;
  std::string holds;  // the line of the report
  std::string content;
};

/// Prepares the file; nothing but what is said to be written may be left.
Prepared prepareOnce(const std::string& input, const test::TempDir& directory) {
  Prepared result;
  const std::string output = directory / "out.stp";
  {
    const test::CapturedCout out;
    const CapturedCerr err;
    result.exitStatus = prepareFile(input, output);
    const std::string report = out.text();
    const std::size_t line = std::min(report.find("  Holds now: "), report.size());
    result.holds = report.substr(line, report.find('\n', line) - line);
  }
  const bool isWritten = std::filesystem::exists(output);
  fuzz::require(isWritten == (result.exitStatus != 1), "an output that belongs to the exit status");
  result.content = isWritten ? test::readFile(output) : std::string();
  std::filesystem::remove(output);
  fuzz::require(std::filesystem::is_empty(directory.path()), "nothing else left");
  return result;
}

/// The corners that the converter decodes.
std::vector<double> decoded(const std::string& content) {
  static test::MemoryFile file;
  EntityTable table;
  readEntityTable(table, file.write(content));
  std::vector<double> numbers;
  for (const Triangle& triangle : decodeAllTriangulatedFaces(table)) {
    for (const Point3* point : {&triangle.v1, &triangle.v2, &triangle.v3}) {
      numbers.insert(numbers.end(), {point->x, point->y, point->z});
    }
  }
  return numbers;
}

void check(const std::string& content) {
  static const test::TempDir directory;
  static test::MemoryFile file;
  const Prepared once = prepareOnce(file.write(content), directory);
  if (once.exitStatus == 1) {
    return;
  }
  fuzz::require(once.exitStatus == 0 || once.exitStatus == 3, "exit status");
  const std::string statements = test::readStatements(file.write(once.content));
  fuzz::require(statements.empty() || statements.back() == '\n', "an output without an error");
  const Prepared twice = prepareOnce(file.path(), directory);
  fuzz::require(twice.exitStatus == once.exitStatus, "the same exit status twice");
  fuzz::require(twice.holds == once.holds, "the same kinds of geometry twice");
  fuzz::require(decoded(twice.content) == decoded(once.content), "the same triangles twice");
}

}  // namespace
}  // namespace plenvorith

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size <= fuzz::kMaxInput) {
    check(fuzz::textOf(data, size));
  }
  return 0;
}
