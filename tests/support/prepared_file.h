#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "prepare/preparation.h"
#include "tests/support/step_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// What `prepareFile` did with a file.
struct Prepared {
  int exitStatus = -1;
  std::string out;
  std::string err;
  std::string file;  ///< the content that was written; empty if nothing was
  bool isWritten = false;
  std::size_t files = 0;  ///< how many there are in the directory afterwards
};

/// Takes the place of a standard stream.
class Captured {
 public:
  explicit Captured(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(text.rdbuf())) {}
  ~Captured() {
    stream_.rdbuf(before_);
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;

  std::ostringstream text;

 private:
  std::ostream& stream_;
  std::streambuf* before_;
};

/// Prepares a file with this content, "in.stp" in a directory of its own, to "out.stp"; paths are
/// left out of what was printed.
inline Prepared prepared(std::string_view content) {
  const TempDir directory;
  const std::string input = writeFile(directory / "in.stp", content);
  const std::string output = directory / "out.stp";
  Prepared result;
  {
    const Captured out(std::cout);
    const Captured err(std::cerr);
    result.exitStatus = prepareFile(input, output);
    result.out = out.text.str();
    result.err = err.text.str();
  }
  for (std::string* text : {&result.out, &result.err}) {
    const std::string folder = directory.path().string() + '/';
    for (std::size_t place = text->find(folder); place != std::string::npos;
         place = text->find(folder)) {
      text->erase(place, folder.size());
    }
  }
  result.isWritten = std::filesystem::exists(output);
  result.file = readFile(output);
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    result.files += entry.exists() ? 1U : 0U;
  }
  return result;
}

}  // namespace plenvorith::test
