// Input: the content of a STEP file.

#include "fuzz/fuzz_target.h"
#include "tests/support/strip_comparison.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  static test::StripComparison comparison;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string difference = comparison.differenceFor(fuzz::textOf(data, size));
  fuzz::require(difference.empty(), difference.c_str());
  return 0;
}
