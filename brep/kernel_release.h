#pragma once

namespace plenvorith {

/// The release of the kernel that this is built with, as in "7.6.3".
const char* kernelRelease();

}  // namespace plenvorith
