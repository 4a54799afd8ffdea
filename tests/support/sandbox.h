#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// What is in a directory: path to content, or to what else it is.
using DirectoryContent = std::map<std::string, std::string>;

/// A fresh directory in which a program runs, with an empty `tmp/`, its temporary directory.
class Sandbox {
 public:
  Sandbox();
  ~Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  const std::filesystem::path& path() const {
    return directory_.path();
  }
  std::filesystem::path operator/(std::string_view name) const;
  void write(std::string_view name, std::string_view content) const;
  void makeDirectory(std::string_view name) const;
  std::string read(std::string_view name) const;
  DirectoryContent content() const;

 private:
  TempDir directory_;
};

/// Paths in text order.
struct Changes {
  std::vector<std::string> made = {};     // not there before
  std::vector<std::string> changed = {};  // other content than before
  std::vector<std::string> removed = {};  // no longer there
};

Changes changesBetween(const DirectoryContent& before, const DirectoryContent& after);

}  // namespace plenvorith::test
