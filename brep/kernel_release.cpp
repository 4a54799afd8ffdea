#include "brep/kernel_release.h"

#include <Standard_Version.hxx>

namespace plenvorith {

const char* kernelRelease() {
  return OCC_VERSION_COMPLETE;
}

}  // namespace plenvorith
