// Input: the content of a STEP file, read statement by statement.

#include "fuzz/fuzz_target.h"
#include "tests/reference/reference_statements.h"
#include "tests/support/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  static test::MemoryFile file;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string content = fuzz::textOf(data, size);
  fuzz::require(test::readStatements(file.write(content)) == test::referenceStatements(content),
                "statements");
  return 0;
}
