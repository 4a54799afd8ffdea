#include "batch/local/conversion_loop.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

TEST(SortForConversion, PutsLargeFilesFirstAndKeepsTheOrderOfOthers) {
  std::vector<InputFile> files = {{"a", 5}, {"b", 20000000}, {"c", 9}, {"d", 30000000}, {"e", 1}};
  sortForConversion(files);
  std::string order;
  for (const InputFile& file : files) {
    order += file.path;
  }
  EXPECT_EQ(order, "dbace");
}

TEST(FreeMemory, IsSomeOfIt) {
  EXPECT_GT(freeMemory(), 1000000);
}

}  // namespace
}  // namespace plenvorith
