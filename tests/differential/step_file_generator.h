#pragma once

#include <random>
#include <string>

namespace plenvorith::test {

/// Makes a whole STEP file with tessellation, the same for the same state of `random`.
///
/// About half of the files hold only mistakes that are tolerated; in the others any byte, number
/// or line end may be wrong. Lines stay under 16 kB.
std::string generateStepFile(std::mt19937& random);

}  // namespace plenvorith::test
