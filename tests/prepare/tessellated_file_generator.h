#pragma once

#include <random>
#include <string>

namespace plenvorith::test {

/// Makes a valid STEP file with products, usages, exact geometry and tessellation of every kind, in
/// random order and layout; the same for the same state of `random`.
///
/// Solids of exact geometry are balls that a kernel can read. No file is ambiguous: a product is used
/// or mapped, not both, and stands at one place in no more than one way.
std::string generateTessellatedFile(std::mt19937& random);

}  // namespace plenvorith::test
