// Input: the content of a STEP file.

#include "fuzz/fuzz_target.h"
#include "steptext/strip_tessellation.h"
#include "tests/reference/reference_strip.h"
#include "tests/support/captured_cout.h"
#include "tests/support/memory_file.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  static const test::TempDir dir;
  static const test::ScopedEnv env("TMPDIR", dir.path());
  static test::MemoryFile file;
  if (size > fuzz::kMaxInput) {
    return 0;
  }
  const std::string content = fuzz::textOf(data, size);
  const std::string input = file.write(content);
  const test::CapturedCout out;
  const std::string path = stripTessellation(input);
  const test::ReferenceStrip expected = test::referenceStrip(content);
  fuzz::require((path != input) == expected.makesCopy, "whether a copy is made");
  fuzz::require(test::readFile(input) == content, "the input, which must stay");
  if (!expected.makesCopy) {
    fuzz::require(out.text().empty(), "printed text");
    return 0;
  }
  fuzz::require(out.text() == "[PREPROCESS] Stripped " + std::to_string(expected.removedLines) +
                                  " lines -> " + path + "\n",
                "printed line");
  fuzz::require(test::readFile(path) == expected.copy, "the copy");
  return 0;
}
