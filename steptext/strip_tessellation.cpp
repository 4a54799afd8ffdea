#include "steptext/strip_tessellation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string_view>
#include <vector>

#include "common/reserve.h"
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

/// Stays in the processor's second-level cache; larger blocks take as long or longer.
constexpr std::size_t kBlockSize = std::size_t{1} << 17;

/// Words that decide whether there is anything to strip.
constexpr std::array<std::string_view, 2> kTriggerWords = {"TESSELLATED_", "COMPLEX_TRIANGULATED_"};
constexpr std::size_t kOverlap = 20;  // one less than the longest of them

/// Whether `text` may hold a trigger word: whether it holds the letters "LAT", which every trigger
/// word does and little else in a file of exact geometry. The compiler turns the loop into wide
/// instructions, which makes it several times as fast as any search for the words themselves.
bool mayHoldTriggerWord(std::string_view text) {
  const char* const bytes = text.data();
  unsigned char found = 0;
  for (std::size_t i = 0; i + 2 < text.size(); ++i) {
    const int difference = (bytes[i] ^ 'L') | (bytes[i + 1] ^ 'A') | (bytes[i + 2] ^ 'T');
    found |= static_cast<unsigned char>(difference == 0 ? 1 : 0);
  }
  return found != 0;
}

/// Whether `text` holds a trigger word in any place: in a type that is not stripped, in a string,
/// in the header. A word holds no line feed, so lines need not be told apart.
bool holdsTriggerWord(std::string_view text) {
  constexpr std::size_t kChunk = 4096;
  for (std::size_t start = 0; start < text.size(); start += kChunk) {
    const std::string_view chunk = text.substr(start, kChunk + kOverlap);
    const auto isIn = [chunk](std::string_view word) {
      return chunk.find(word) != std::string_view::npos;
    };
    if (mayHoldTriggerWord(chunk) &&
        std::any_of(kTriggerWords.begin(), kTriggerWords.end(), isIn)) {
      return true;
    }
  }
  return false;
}

/// Reads a file whole if it holds a trigger word; gives nothing otherwise.
std::optional<std::string> readIfTessellated(std::ifstream& file) {
  // Most files hold none and only pass through one block of memory. One that does is read once
  // more, whole; what cannot be read twice (a pipe) is kept from the start.
  const std::streamoff size = file.seekg(0, std::ios::end).tellg();
  const bool isRereadable = size >= 0;
  file.clear();
  file.seekg(0);
  file.clear();

  std::string content;
  std::vector<char> block(kBlockSize);
  std::size_t overlap = 0;  // bytes of the block before, in front: a word may lie across
  bool isTessellated = false;
  while (!isTessellated && file.good()) {
    char* const fresh = block.data() + overlap;
    file.read(fresh, static_cast<std::streamsize>(block.size() - overlap));
    const auto freshSize = static_cast<std::size_t>(file.gcount());
    if (!isRereadable) {
      content.append(fresh, freshSize);
    }
    const std::string_view bytes(block.data(), overlap + freshSize);
    isTessellated = holdsTriggerWord(bytes);
    overlap = std::min(kOverlap, bytes.size());
    std::memmove(block.data(), bytes.data() + bytes.size() - overlap, overlap);
  }
  if (!isTessellated) {
    return std::nullopt;
  }
  if (isRereadable) {
    file.clear();
    file.seekg(0);
    content.reserve(static_cast<std::size_t>(size));
    preferLargePages(content.data(), content.capacity());
  }
  while (file.good()) {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    content.append(block.data(), static_cast<std::size_t>(file.gcount()));
  }
  return content;
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
  const std::optional<std::string> content = readIfTessellated(file);
  file.close();
  if (!content) {
    return path;
  }
  const KeptLines kept = withoutTessellation(*content);
  const std::filesystem::path cleanName = std::string(lastComponent(path)) + ".clean.stp";
  std::string cleanPath = (std::filesystem::temp_directory_path() / cleanName).string();
  writeLines(cleanPath, kept.runs);
  std::cout << "[PREPROCESS] Stripped " << kept.removedLines << " lines -> " << cleanPath
            << std::endl;
  return cleanPath;
}

}  // namespace plenvorith
