#include "tests/cli/inputs.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {

std::string dataFile(std::string_view name) {
  std::string content = readFile(std::filesystem::path(PLENVORITH_TEST_DATA) / name);
  EXPECT_FALSE(content.empty()) << name;
  return content;
}

std::string box() {
  return dataFile("box.step");
}

std::string paired() {
  return dataFile("paired.entities");
}

std::string unique() {
  return dataFile("unique.entities");
}

}  // namespace plenvorith::test
