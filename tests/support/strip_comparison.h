#pragma once

#include <filesystem>
#include <string>

#include "steptext/strip_tessellation.h"
#include "tests/reference/reference_strip.h"
#include "tests/support/captured_cout.h"
#include "tests/support/memory_file.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// Compares `stripTessellation` with its reference on any number of contents.
///
/// The input is in memory, and every copy is a new file: file systems write a file that is
/// truncated and filled again to the disk at once, which takes longer than all the rest.
class StripComparison {
 public:
  /// What differs, or nothing.
  std::string differenceFor(const std::string& content) {
    const ReferenceStrip expected = referenceStrip(content);
    const std::string input = input_.write(content);
    const std::string copy =
        dir_ / (std::filesystem::path(input).filename().string() + ".clean.stp");
    const CapturedCout out;
    const std::string path = stripTessellation(input);
    if (readFile(input) != content) {
      return "the input, which must stay";
    }
    if (path != (expected.makesCopy ? copy : input)) {
      return "the path " + path;
    }
    if (!expected.makesCopy) {
      return out.text().empty() ? "" : "the printed text " + out.text();
    }
    if (out.text() != "[PREPROCESS] Stripped " + std::to_string(expected.removedLines) +
                          " lines -> " + path + "\n") {
      return "the printed line " + out.text();
    }
    const std::string actual = readFile(path);
    std::filesystem::remove(path);
    return actual == expected.copy ? "" : "the copy " + actual;
  }

 private:
  TempDir dir_;
  ScopedEnv env_{"TMPDIR", dir_.path()};
  MemoryFile input_;
};

}  // namespace plenvorith::test
