#pragma once

#include <string>

#include "brep/part_facts.h"

namespace plenvorith {

/// Reads and meshes the exact geometry of a STEP file as the converter does, and finds out what can
/// be told of each of its parts.
///
/// Takes   the linear `deflection` in millimetres; `withExact`: whether volume, area and centre of
///         gravity of the exact geometry are wanted, which takes longer than the rest.
/// Gives   true if `model` holds at least one part; its triangles are those of the converter, to
///         the bit.
/// Errors  those of the kernel pass.
[[nodiscard]] bool readBrepParts(const std::string& path, double deflection, bool withExact,
                                 BrepModel& model);

}  // namespace plenvorith
