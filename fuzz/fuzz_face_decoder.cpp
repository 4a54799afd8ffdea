// Input: the content of a STEP file.

#include "common/instance_names.h"
#include "fuzz/fuzz_target.h"
#include "tessellation/face_decoder.h"
#include "tests/reference/reference_entity_table.h"
#include "tests/reference/reference_face_decoder.h"
#include "tests/support/outcome.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const test::EntityTexts entities = test::referenceEntityTable(fuzz::textOf(data, size));
  const EntityTable table = test::tableWith(entities);
  fuzz::require(test::outcomeOf([&] { return decodeAllTriangulatedFaces(table); }) ==
                    test::outcomeOf([&] { return test::referenceDecodeAll(entities); }),
                "all faces");
  // Names with an odd last digit, whatever they name, and one that names nothing.
  InstanceNames names = {"#"};
  for (const auto& [name, text] : table) {
    if ((name.back() - '0') % 2 == 1) {
      names.emplace(name);
    }
  }
  fuzz::require(test::outcomeOf([&] { return decodeTriangulatedFaces(table, names); }) ==
                    test::outcomeOf([&] { return test::referenceDecode(entities, names); }),
                "named faces");
  return 0;
}
