// Input: the content of a STEP file.

#include "fuzz/fuzz_target.h"
#include "tests/reference/reference_entity_table.h"
#include "tests/support/step_text.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string content = fuzz::textOf(data, size);
  fuzz::require(test::tableOf(content) == test::referenceEntityTable(content), "entity table");
  return 0;
}
