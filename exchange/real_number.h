#pragma once

#include <cmath>
#include <limits>

#include "common/number.h"

namespace plenvorith {

/// A real number of ISO 10303-21 as it stands in a file.
struct RealNumber {
  enum class Kind {
    Plain,
    Tiny,  ///< next to nothing, below what a double holds in full: 0 is taken
    Huge,  ///< more than a double holds
    None,  ///< no number
  };
  Kind kind = Kind::None;
  double value = 0.0;         ///< 0 unless it is a plain one
  const char* end = nullptr;  ///< behind it
};

/// Reads a number that is no plain one, or of a shape that takes longer.
[[nodiscard]] RealNumber readUnusualReal(const char* first, const char* last);

/// Reads the number at `first`; `readable` bytes behind `last` may be looked at, though none counts.
[[gnu::always_inline]] inline RealNumber readReal(const char* first, const char* last,
                                                  std::size_t readable = 0) {
  double value = 0.0;
  const NumberResult result = readNumber(first, last, value, readable);
  const bool isPlain = result.error == NumberError::None &&
                       (value == 0.0 || std::abs(value) >= std::numeric_limits<double>::min());
  return isPlain ? RealNumber{RealNumber::Kind::Plain, value, result.end}
                 : readUnusualReal(first, last);
}

}  // namespace plenvorith
