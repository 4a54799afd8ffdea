#include "steptext/strip_tessellation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

#include "common/block_reader.h"
#include "common/reserve.h"
#include "steptext/entity_start.h"
#include "steptext/line_reader.h"
#include "steptext/trigger_word.h"

namespace plenvorith {
namespace {

constexpr std::array<std::string_view, 4> kStrippedTypes = {
    "TESSELLATED_SOLID",
    "TESSELLATED_SHAPE_REPRESENTATION",
    "COMPLEX_TRIANGULATED_FACE",
    "COORDINATES_LIST",
};

/// What stays of a file: whole lines, each with a line feed.
struct KeptLines {
  std::string text;
  std::int64_t removedLines = 0;
};

/// Reads on until a trigger word has come by.
///
/// Most files hold none and only pass through one block of memory. One that does is read once more;
/// what cannot be read twice (a pipe) stays in `block` from the start.
bool findTriggerWord(BlockReader& file, std::string_view& block) {
  // A word may lie across the border of two blocks.
  constexpr std::size_t kAcross = kLongestTriggerWord - 1;
  const bool isRereadable = file.seek(0);
  std::size_t kept = 0;
  while (file.next(block, kept)) {
    if (holdsTriggerWord(block.substr(kept - std::min(kept, kAcross)))) {
      return true;
    }
    kept = isRereadable ? std::min(block.size(), kAcross) : block.size();
  }
  return false;
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

KeptLines withoutTessellation(LineReader& lines, std::size_t mostBytes) {
  KeptLines kept;
  kept.text.reserve(mostBytes);
  preferLargePages(kept.text.data(), kept.text.capacity());
  bool isStripped = false;
  // The last byte of a line that is to be stripped, carriage returns aside. A ";" ends the entity,
  // but nothing else may stand behind it, neither a blank nor a comment.
  char lastByte = ';';
  std::string_view piece;
  while (lines.next(piece)) {
    if (lines.startsLine()) {
      isStripped = (isStripped && lastByte != ';') || startsStrippedEntity(piece);
      lastByte = '\0';
    }
    if (isStripped) {
      const std::size_t last = piece.find_last_not_of('\r');
      lastByte = last == std::string_view::npos ? lastByte : piece[last];
      kept.removedLines += lines.endsLine() ? 1 : 0;
    } else {
      kept.text += piece;
      if (lines.endsLine()) {
        kept.text += '\n';
      }
    }
  }
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

}  // namespace

std::string stripTessellation(const std::string& path) {
  BlockReader file(path);
  std::string_view start;
  if (!findTriggerWord(file, start)) {
    return path;
  }
  const std::uint64_t size = file.sizeHint();
  if (file.seek(0)) {
    start = {};
  }
  LineReader lines(file, start);
  const KeptLines kept = withoutTessellation(lines, size);
  const std::filesystem::path cleanName = std::string(lastComponent(path)) + ".clean.stp";
  std::string cleanPath = (std::filesystem::temp_directory_path() / cleanName).string();
  std::ofstream(cleanPath).write(kept.text.data(), static_cast<std::streamsize>(kept.text.size()));
  std::cout << "[PREPROCESS] Stripped " << kept.removedLines << " lines -> " << cleanPath
            << std::endl;
  return cleanPath;
}

}  // namespace plenvorith
