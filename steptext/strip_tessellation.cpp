#include "steptext/strip_tessellation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <vector>

#include "steptext/entity_start.h"

namespace plenvorith {
namespace {

constexpr std::array<std::string_view, 4> kStrippedTypes = {
    "TESSELLATED_SOLID",
    "TESSELLATED_SHAPE_REPRESENTATION",
    "COMPLEX_TRIANGULATED_FACE",
    "COORDINATES_LIST",
};

/// What stays of a file: runs of whole lines, each with its line feed, except perhaps the last.
struct KeptLines {
  std::vector<std::string_view> runs;
  std::int32_t removedLines = 0;
};

std::string readWholeFile(std::ifstream& file) {
  constexpr std::size_t kBlockSize = std::size_t{1} << 20;
  std::string content;
  while (file.good()) {
    const std::size_t size = content.size();
    content.resize(size + kBlockSize);
    file.read(content.data() + size, kBlockSize);
    content.resize(size + static_cast<std::size_t>(file.gcount()));
  }
  return content;
}

/// Whether the file names any tessellated type, also one that is not stripped, in whatever place.
/// A word holds no line feed, so the whole file can be searched at once.
bool namesTessellation(std::string_view content) {
  return content.find("TESSELLATED_") != std::string_view::npos ||
         content.find("COMPLEX_TRIANGULATED_") != std::string_view::npos;
}

/// Whether a line starts an entity to strip. The type only has to begin with one of the names, and
/// nothing may stand between the instance name, "=" and the type.
bool startsStrippedEntity(std::string_view line) {
  const std::size_t nameLength = entityNameLength(line);
  if (nameLength == 0) {
    return false;
  }
  const std::string_view text = line.substr(nameLength + 1);
  return std::any_of(kStrippedTypes.begin(), kStrippedTypes.end(),
                     [&](std::string_view type) { return text.starts_with(type); });
}

/// Whether a line ends an entity to strip: its last byte is ";", line ends aside. Nothing else may
/// stand behind the semicolon, neither a blank nor a comment.
bool endsStrippedEntity(std::string_view line) {
  const std::size_t last = line.find_last_not_of("\r\n");
  return last != std::string_view::npos && line[last] == ';';
}

/// Cuts the next line, with its line feed, off the front of `content`.
std::string_view takeLine(std::string_view& content) {
  const std::string_view line = content.substr(0, content.find('\n'));
  const std::string_view whole = content.substr(0, line.size() + 1);
  content.remove_prefix(whole.size());
  return whole;
}

KeptLines withoutTessellation(std::string_view content) {
  KeptLines kept;
  const char* runStart = content.data();
  while (!content.empty()) {
    std::string_view line = takeLine(content);
    if (!startsStrippedEntity(line)) {
      continue;
    }
    kept.runs.emplace_back(runStart, static_cast<std::size_t>(line.data() - runStart));
    ++kept.removedLines;
    while (!endsStrippedEntity(line) && !content.empty()) {
      line = takeLine(content);
      ++kept.removedLines;
    }
    runStart = content.data();
  }
  kept.runs.emplace_back(runStart, static_cast<std::size_t>(content.data() - runStart));
  return kept;
}

/// The last component of a path. Both separators count on every platform, since paths come from
/// files and scripts of any; so does a drive prefix, which is not part of the component.
std::string_view lastComponent(std::string_view path) {
  const std::size_t separator = path.find_last_of("/\\");
  if (separator != std::string_view::npos) {
    return path.substr(separator + 1);
  }
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  const bool hasDrive = path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
  return hasDrive ? path.substr(2) : path;
}

void writeLines(const std::string& path, const std::vector<std::string_view>& runs) {
  std::ofstream file(path);
  char last = '\n';
  for (const std::string_view run : runs) {
    file.write(run.data(), static_cast<std::streamsize>(run.size()));
    last = run.empty() ? last : run.back();
  }
  if (last != '\n') {
    file.put('\n');
  }
}

}  // namespace

std::string stripTessellation(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    return path;
  }
  const std::string content = readWholeFile(file);
  file.close();
  if (!namesTessellation(content)) {
    return path;
  }
  const KeptLines kept = withoutTessellation(content);
  const std::filesystem::path cleanName = std::string(lastComponent(path)) + ".clean.stp";
  const std::string cleanPath = (std::filesystem::temp_directory_path() / cleanName).string();
  writeLines(cleanPath, kept.runs);
  std::cout << "[PREPROCESS] Stripped " << kept.removedLines << " lines -> " << cleanPath
            << std::endl;
  return cleanPath;
}

}  // namespace plenvorith
