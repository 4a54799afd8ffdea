#pragma once

#include <string>
#include <vector>

#include "common/triangle.h"

namespace plenvorith::test {

/// The bytes of the file that `writeBinaryStl` writes, on a little-endian machine.
std::string referenceBinaryStl(const std::vector<Triangle>& triangles);

}  // namespace plenvorith::test
