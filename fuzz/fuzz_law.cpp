// Input: the content of a STEP file. Prepared, it still holds what the kernel makes faces of.

#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "fuzz/fuzz_target.h"
#include "prepare/preparation.h"
#include "tests/reference/reference_delivery.h"
#include "tests/support/captured_cout.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using Delivery = std::map<std::string, std::string>;

/// Nothing where the file is malformed: how such a file is mended only the kernel can judge.
std::optional<Delivery> deliveryOf(const std::string& content) {
  try {
    return test::referenceDelivery(content);
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

std::string prepared(const std::string& content) {
  static const test::TempDir directory;
  static test::MemoryFile file;
  const std::string output = directory / "out.stp";
  const std::string input = file.write(content);
  const test::CapturedCout out;
  std::ostringstream errors;
  std::streambuf* const before = std::cerr.rdbuf(errors.rdbuf());
  const int exitStatus = prepareFile(input, output);
  std::cerr.rdbuf(before);
  fuzz::require(exitStatus != 1, "a well-formed file is prepared");
  std::string result = test::readFile(output);
  std::filesystem::remove(output);
  return result;
}

void check(const std::string& content) {
  const std::optional<Delivery> before = deliveryOf(content);
  if (!before || before->empty()) {
    return;
  }
  const std::optional<Delivery> after = deliveryOf(prepared(content));
  fuzz::require(after.has_value(), "a well-formed output");
  for (const auto& [name, text] : *before) {
    const auto found = after->find(name);
    if (found == after->end() || found->second != text) {
      std::cerr << name << " " << text << std::endl;
    }
    fuzz::require(found != after->end(), "what the kernel delivers alone is still there");
    fuzz::require(found->second == text, "and has not changed");
  }
}

}  // namespace
}  // namespace plenvorith

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace plenvorith;
  if (size <= fuzz::kMaxInput) {
    check(fuzz::textOf(data, size));
  }
  return 0;
}
