#pragma once

#include <span>
#include <string>

#include "common/triangle.h"

namespace plenvorith {

/// Whether an STL file holds these triangles, in their order and to the bit.
///
/// Gives   what is wrong with the file or where it differs, for a line that names the file in front;
///         empty if it holds them.
[[nodiscard]] std::string differenceFrom(const std::string& path,
                                         std::span<const Triangle> triangles);

}  // namespace plenvorith
