#pragma once

#include <string>

namespace plenvorith {

/// Version of the program and release of the kernel, which together decide what becomes of a file:
/// "0.1.0 (Open CASCADE 7.6.3)".
std::string versionText();

}  // namespace plenvorith
