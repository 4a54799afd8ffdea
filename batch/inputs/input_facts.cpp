#include "batch/inputs/input_facts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/system/descriptor.h"

namespace plenvorith {
namespace {

constexpr std::string_view kStart = "ISO-10303-21";
constexpr std::string_view kEnd = "END-ISO-10303-21";
constexpr std::array<std::string_view, 2> kTessellation = {"TRIANGULATED_", "TESSELLATED_"};
constexpr std::array<std::string_view, 4> kExact = {"ADVANCED_FACE", "MANIFOLD_SOLID_BREP",
                                                    "SHELL_BASED_SURFACE_MODEL", "FACETED_BREP"};
constexpr std::size_t kOverlap = 32;  // longer than any of them

char toUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool holds(std::string_view text, std::string_view word) {
  return memmem(text.data(), text.size(), word.data(), word.size()) != nullptr;
}

template <typename Words>
bool holdsAny(std::string_view text, const Words& words) {
  return std::any_of(words.begin(), words.end(),
                     [text](std::string_view word) { return holds(text, word); });
}

/// Whether the text holds the opening keyword other than in the closing one.
bool holdsStart(std::string_view text) {
  std::size_t place = text.find(kStart);
  while (place != std::string_view::npos) {
    if (place < 4 || text.substr(place - 4, 4) != "END-") {
      return true;
    }
    place = text.find(kStart, place + 1);
  }
  return false;
}

/// What the first bytes of a file tell that is no STEP file; empty if they tell nothing.
const char* formOf(std::string_view start) {
  using namespace std::string_view_literals;
  if (start.starts_with("\x1f\x8b"sv)) {
    return "packed with gzip";
  }
  if (start.starts_with("PK\3\4"sv)) {
    return "packed with zip";
  }
  const bool isUtf16 = start.starts_with("\xff\xfe"sv) || start.starts_with("\xfe\xff"sv) ||
                       start.starts_with("I\0S\0"sv) || start.starts_with("\0I\0S"sv);
  return isUtf16 ? "text in UTF-16" : "";
}

void lookAt(std::string_view text, InputFacts& facts) {
  facts.hasStart = facts.hasStart || holdsStart(text);
  facts.hasEnd = facts.hasEnd || holds(text, kEnd);
  facts.hasTessellation = facts.hasTessellation || holdsAny(text, kTessellation);
  facts.hasExactGeometry = facts.hasExactGeometry || holdsAny(text, kExact);
}

Descriptor openRegular(const std::string& path) {
  Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return {};
  }
  return file;
}

/// Reads a regular file in blocks, each with the end of the one before in front, in which a word may
/// begin, until `visit` gives false; whether it was read to its end.
template <typename Visit>
bool readThrough(const std::string& path, Visit visit) {
  constexpr std::size_t kBlockSize = std::size_t{1} << 18;
  const Descriptor file = openRegular(path);
  std::vector<char> block(kBlockSize);
  std::size_t kept = 0;
  ssize_t count = -1;
  while (file.isOpen() &&
         (count = read(file.get(), block.data() + kept, block.size() - kept)) > 0) {
    const std::size_t size = kept + static_cast<std::size_t>(count);
    if (!visit(block.data(), size)) {
      return false;
    }
    kept = std::min(kOverlap, size);
    std::memmove(block.data(), block.data() + size - kept, kept);
  }
  return count == 0;
}

}  // namespace

InputFacts factsOf(const std::string& path) {
  InputFacts facts;
  bool isFirst = true;
  facts.isWhole = readThrough(path, [&](char* text, std::size_t size) {
    if (isFirst) {
      facts.form = formOf(std::string_view(text, size));
      isFirst = false;
    }
    // Words of any case tell what the file is meant to be.
    std::transform(text, text + size, text, toUpper);
    lookAt(std::string_view(text, size), facts);
    return true;
  });
  return facts;
}

bool holdsTessellation(const std::string& path) {
  bool isThere = false;
  (void)readThrough(path, [&](const char* text, std::size_t size) {
    isThere = holdsAny(std::string_view(text, size), kTessellation);
    return !isThere;
  });
  return isThere;
}

bool endsInTheMiddle(const std::string& path) {
  const Descriptor file = openRegular(path);
  if (!file.isOpen()) {
    return false;
  }
  constexpr std::size_t kEnds = 2048;
  if (holds(readEnds(file.get(), kEnds), kEnd)) {
    return false;  // as nearly all do
  }
  const InputFacts facts = factsOf(path);
  return facts.isWhole && !facts.hasEnd;
}

}  // namespace plenvorith
