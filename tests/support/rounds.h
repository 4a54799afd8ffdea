#pragma once

#include <cstdlib>
#include <string>

namespace plenvorith::test {

/// How many random inputs a test makes: a tenth of `whole`, and all of them where the environment
/// variable PLENVORITH_THOROUGH is set, as script/test-nightly sets it.
inline int rounds(int whole) {
  static const bool isThorough = std::getenv("PLENVORITH_THOROUGH") != nullptr;
  return isThorough ? whole : whole / 10;
}

/// A number that an environment variable gives.
inline unsigned long fromEnvironment(const char* name, unsigned long otherwise) {
  const char* const value = std::getenv(name);
  return value == nullptr ? otherwise : std::stoul(value);
}

}  // namespace plenvorith::test
