#include "steptext/trigger_word.h"

namespace plenvorith {
namespace {

/// Whether `text` holds the letters "LAT", which every trigger word does and little else in a file
/// of exact geometry. The compiler turns the loop into wide instructions, so that a file is
/// searched in half the time that memmem takes for the two words.
bool mayHoldTriggerWord(std::string_view text) {
  const char* const bytes = text.data();
  unsigned char found = 0;
  for (std::size_t i = 0; i + 2 < text.size(); ++i) {
    const int difference = (bytes[i] ^ 'L') | (bytes[i + 1] ^ 'A') | (bytes[i + 2] ^ 'T');
    found |= static_cast<unsigned char>(difference == 0 ? 1 : 0);
  }
  return found != 0;
}

bool holds(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

}  // namespace

bool holdsTriggerWord(std::string_view text) {
  // A chunk at a time, so that one "LAT" costs a search of little.
  constexpr std::size_t kChunk = 4096;
  for (std::size_t start = 0; start < text.size(); start += kChunk) {
    const std::string_view chunk = text.substr(start, kChunk + kLongestTriggerWord - 1);
    if (mayHoldTriggerWord(chunk) &&
        (holds(chunk, "TESSELLATED_") || holds(chunk, "COMPLEX_TRIANGULATED_"))) {
      return true;
    }
  }
  return false;
}

}  // namespace plenvorith
