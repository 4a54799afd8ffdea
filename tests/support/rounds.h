#pragma once

#include <cstdlib>

namespace plenvorith::test {

/// How many random inputs a test makes: a tenth of `whole`, and all of them where the environment
/// variable PLENVORITH_THOROUGH is set, as script/test-nightly sets it.
inline int rounds(int whole) {
  static const bool isThorough = std::getenv("PLENVORITH_THOROUGH") != nullptr;
  return isThorough ? whole : whole / 10;
}

}  // namespace plenvorith::test
