#pragma once

#include <string>
#include <string_view>

#include "tests/cli/step_files.h"

namespace plenvorith::test {

/// A file of tests/data, whole; README.md there tells what is in it.
std::string dataFile(std::string_view name);

/// One solid, 10 x 20 x 30 from the origin: 170 entities, 12 triangles at any deflection.
std::string box();

/// Entities to append to the box, or to make a file of their own: tessellation that duplicates
/// exact geometry, and tessellation that nothing is tied to.
std::string paired();
std::string unique();

}  // namespace plenvorith::test
