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

}  // namespace

InputFacts factsOf(const std::string& path) {
  InputFacts facts;
  const Descriptor file = openRegular(path);
  if (!file.isOpen()) {
    return facts;
  }
  constexpr std::size_t kBlockSize = std::size_t{1} << 18;
  std::vector<char> block(kBlockSize);
  std::size_t kept = 0;  // of the block before, in front: a word may lie across
  ssize_t count = 0;
  while ((count = read(file.get(), block.data() + kept, block.size() - kept)) > 0) {
    const std::size_t size = kept + static_cast<std::size_t>(count);
    lookAt(std::string_view(block.data(), size), facts);
    kept = std::min(kOverlap, size);
    std::memmove(block.data(), block.data() + size - kept, kept);
  }
  facts.isWhole = count == 0;
  return facts;
}

bool endsInTheMiddle(const std::string& path) {
  const Descriptor file = openRegular(path);
  if (!file.isOpen()) {
    return false;
  }
  constexpr std::size_t kEnds = 2048;
  if (holds(readEnds(file.get(), kEnds), kEnd)) {
    return false;
  }
  const InputFacts facts = factsOf(path);
  return facts.isWhole && !facts.hasEnd;
}

}  // namespace plenvorith
