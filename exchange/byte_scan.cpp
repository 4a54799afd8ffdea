#include "exchange/byte_scan.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace plenvorith {
namespace {

/// Whether something other than plain text may start at `p`, of which one byte more can be read.
constexpr bool isSpecial(const char* p) {
  const char c = p[0];
  return isIgnored(c) || c == '\'' || c == '"' || c == '/' || c == ';' || (c == '#' && p[1] == '0');
}

/// Whether a string, a binary, a comment or the end of a statement may start here.
constexpr bool isMark(char c) {
  return c == '\'' || c == '"' || c == '/' || c == ';';
}

/// Sixteen bytes, compared at once: a byte of the result is 255 or 0.
using Bytes [[gnu::vector_size(16)]] = unsigned char;

constexpr std::ptrdiff_t kSize = sizeof(Bytes);

Bytes loadBytes(const char* p) {
  Bytes bytes;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

bool holdsAny(Bytes flags) {
  std::array<std::uint64_t, 2> halves = {};
  std::memcpy(halves.data(), &flags, sizeof flags);
  return (halves[0] | halves[1]) != 0;
}

Bytes equal(Bytes bytes, char wanted) {
  // Comparing gives numbers with a sign, which are the same bits.
  return reinterpret_cast<Bytes>(bytes == static_cast<unsigned char>(wanted));
}

}  // namespace

const char* findSpecial(const char* p, const char* end) {
  while (end - p > kSize) {
    const Bytes bytes = loadBytes(p);
    const Bytes blank = reinterpret_cast<Bytes>(bytes <= static_cast<unsigned char>(' '));
    const Bytes zero = equal(bytes, '#') & equal(loadBytes(p + 1), '0');
    if (holdsAny(blank | equal(bytes, '\'') | equal(bytes, '"') | equal(bytes, '/') |
                 equal(bytes, ';') | zero)) {
      break;
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
    int rounds = 255;
    for (; rounds > 0 && end - p >= kSize; --rounds, p += kSize) {
      const Bytes bytes = loadBytes(p);
      if (holdsAny(equal(bytes, '\'') | equal(bytes, '"') | equal(bytes, '/') |
                   equal(bytes, ';'))) {
        break;
      }
      opened -= equal(bytes, '(');
      closed -= equal(bytes, ')');
    }
    for (std::size_t i = 0; i < sizeof opened; ++i) {
      counts.opened += opened[i];
      counts.closed += closed[i];
    }
    if (rounds > 0) {
      break;
    }
  }
  for (; p != end && !isMark(*p); ++p) {
    counts.opened += *p == '(' ? 1 : 0;
    counts.closed += *p == ')' ? 1 : 0;
  }
  return p;
}

}  // namespace plenvorith
