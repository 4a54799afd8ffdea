#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include <stdlib.h>

namespace plenvorith::test {

/// A fresh directory that goes, with all that is in it, at the end of the scope.
class TempDir {
 public:
  TempDir() {
    std::string pattern = std::filesystem::temp_directory_path() / "plenvorith-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
    path_ = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const {
    return path_;
  }
  std::string operator/(std::string_view name) const {
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

/// Writes a file and returns its path.
inline std::string writeFile(const std::filesystem::path& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  return path;
}

/// Writes a shell script that can be run and returns its path.
inline std::string writeScript(const std::filesystem::path& path, const std::string& body) {
  writeFile(path, "#!/bin/sh\n" + body + "\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

}  // namespace plenvorith::test
