#pragma once

#include <cstdlib>
#include <string>

namespace plenvorith::test {

/// Whether time does not matter: the environment variable PLENVORITH_THOROUGH is set, as
/// script/test-nightly sets it.
inline bool isThorough() {
  static const bool is = std::getenv("PLENVORITH_THOROUGH") != nullptr;
  return is;
}

#ifdef PLENVORITH_SANITIZED
inline constexpr bool kHasSanitizers = true;
#else
inline constexpr bool kHasSanitizers = false;
#endif

/// How many random inputs a test makes: all of them where time does not matter, else a tenth, and with
/// sanitizers, which make everything several times as slow, a fortieth.
inline int rounds(int whole) {
  return isThorough() ? whole : whole / (kHasSanitizers ? 40 : 10);
}

/// How far apart those are that a test takes of a long series: with sanitizers `distance`, unless time
/// does not matter.
inline int stride(int distance) {
  return kHasSanitizers && !isThorough() ? distance : 1;
}

/// A number that an environment variable gives.
inline unsigned long fromEnvironment(const char* name, unsigned long otherwise) {
  const char* const value = std::getenv(name);
  return value == nullptr ? otherwise : std::stoul(value);
}

}  // namespace plenvorith::test
