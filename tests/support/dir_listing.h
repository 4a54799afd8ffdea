#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace plenvorith::test {

/// The names of what is in a directory.
inline std::set<std::string> namesIn(const std::filesystem::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename());
  }
  return names;
}

}  // namespace plenvorith::test
