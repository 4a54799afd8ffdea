#include "brep/kernel_release.h"

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

TEST(KernelRelease, IsThreeNumbers) {
  EXPECT_THAT(kernelRelease(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+.*"));
}

}  // namespace
}  // namespace plenvorith
