#include "batch/version.h"

#include "brep/kernel_release.h"

namespace plenvorith {

std::string versionText() {
  return std::string(PLENVORITH_VERSION) + " (Open CASCADE " + kernelRelease() + ")";
}

}  // namespace plenvorith
