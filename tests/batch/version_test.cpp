#include "batch/version.h"

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

TEST(VersionText, NamesProgramAndKernel) {
  EXPECT_THAT(versionText(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+ "
                                                   "\\(Open CASCADE [0-9]+\\.[0-9]+\\.[0-9]+\\)"));
}

}  // namespace
}  // namespace plenvorith
