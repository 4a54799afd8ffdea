#include "exchange/byte_scan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace plenvorith {
namespace {

/// Whether something other than plain text may start at `p`, of which one byte more can be read.
constexpr bool isSpecial(const char* p) {
  const char c = p[0];
  return isIgnored(c) || c == '\'' || c == '/' || c == ';' || (c == '#' && p[1] == '0');
}

/// Whether a string, a comment or the end of a statement may start here.
constexpr bool isMark(char c) {
  return c == '\'' || c == '/' || c == ';';
}

/// Sixteen bytes, compared at once: a byte of the result is 255 or 0.
using Bytes [[gnu::vector_size(16)]] = unsigned char;

constexpr std::ptrdiff_t kSize = sizeof(Bytes);

Bytes loadBytes(const char* p) {
  Bytes bytes;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

using Halves = std::array<std::uint64_t, 2>;

Halves halvesOf(Bytes bytes) {
  return std::bit_cast<Halves>(bytes);
}

bool holdsAny(Bytes flags) {
  const Halves halves = halvesOf(flags);
  return (halves[0] | halves[1]) != 0;
}

/// The place of the first byte that is not 0, of which there is one.
std::ptrdiff_t firstOf(Bytes flags) {
  const Halves halves = halvesOf(flags);
  const std::uint64_t half = halves[0] != 0 ? halves[0] : halves[1];
  const int bits =
      std::endian::native == std::endian::little ? std::countr_zero(half) : std::countl_zero(half);
  return (halves[0] != 0 ? 0 : 8) + bits / 8;
}

/// 255 in as many bytes from the first one on, 0 in the others.
Bytes firstBytes(std::ptrdiff_t count) {
  constexpr Bytes kPlaces = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  return reinterpret_cast<Bytes>(kPlaces < static_cast<unsigned char>(count));
}

std::uint64_t sumOf(Bytes counts) {
  constexpr std::uint64_t kEveryOther = 0x00FF'00FF'00FF'00FF;
  const Halves halves = halvesOf(counts);
  // Four sums of four bytes each, and the sum of these in the uppermost one.
  const std::uint64_t sums = (halves[0] & kEveryOther) + (halves[0] >> 8U & kEveryOther) +
                             (halves[1] & kEveryOther) + (halves[1] >> 8U & kEveryOther);
  return (sums * 0x0001'0001'0001'0001) >> 48U;
}

Bytes equal(Bytes bytes, char wanted) {
  // Comparing gives numbers with a sign, which are the same bits.
  return reinterpret_cast<Bytes>(bytes == static_cast<unsigned char>(wanted));
}

}  // namespace

bool startsWith(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                  [](char a, char b) { return a == capital(b); });
}

const char* findSpecial(const char* p, const char* end) {
  while (end - p > kSize) {
    const Bytes bytes = loadBytes(p);
    const Bytes blank = reinterpret_cast<Bytes>(bytes <= static_cast<unsigned char>(' '));
    const Bytes zero = equal(bytes, '#') & equal(loadBytes(p + 1), '0');
    const Bytes special = blank | equal(bytes, '\'') | equal(bytes, '/') | equal(bytes, ';') | zero;
    if (holdsAny(special)) {
      return p + firstOf(special);
    }
    p += kSize;
  }
  while (end - p > 1 && !isSpecial(p)) {
    ++p;
  }
  return p;
}

const char* findMark(const char* p, const char* end, Parentheses& counts) {
  while (end - p >= kSize) {
    // Counts in bytes as long as none overflows.
    Bytes opened = {};
    Bytes closed = {};
    const char* found = nullptr;
    for (int rounds = 255; rounds > 0 && end - p >= kSize; --rounds, p += kSize) {
      const Bytes bytes = loadBytes(p);
      const Bytes open = equal(bytes, '(');
      const Bytes close = equal(bytes, ')');
      const Bytes marks = equal(bytes, '\'') | equal(bytes, '/') | equal(bytes, ';');
      if (holdsAny(marks)) {
        const std::ptrdiff_t place = firstOf(marks);
        opened -= open & firstBytes(place);
        closed -= close & firstBytes(place);
        found = p + place;
        break;
      }
      opened -= open;
      closed -= close;
    }
    counts.opened += sumOf(opened);
    counts.closed += sumOf(closed);
    if (found != nullptr) {
      return found;
    }
  }
  for (; p != end && !isMark(*p); ++p) {
    counts.opened += *p == '(' ? 1 : 0;
    counts.closed += *p == ')' ? 1 : 0;
  }
  return p;
}

}  // namespace plenvorith
