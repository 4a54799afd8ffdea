// Input: the content of a STEP file.

#include "fuzz/fuzz_target.h"
#include "steptext/tessellation_analysis.h"
#include "tests/reference/reference_analysis.h"
#include "tests/reference/reference_entity_table.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const test::EntityTexts table = test::referenceEntityTable(fuzz::textOf(data, size));
  const TessellationAnalysis actual = analyzeTessellation(test::tableWith(table));
  const TessellationAnalysis expected = test::referenceAnalysis(table);
  fuzz::require(actual.status == expected.status, "status");
  fuzz::require(actual.pairedReps == expected.pairedReps, "paired representations");
  fuzz::require(actual.uniqueReps == expected.uniqueReps, "unique representations");
  fuzz::require(actual.uniqueFaces == expected.uniqueFaces, "unique faces");
  return 0;
}
