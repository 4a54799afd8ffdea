#pragma once

#include <string>

#include "check/checked_model.h"

namespace plenvorith {

/// Reads and meshes a STEP file as the converter does, and looks at each part.
///
/// Takes   the `input`; a `mesh` that has to be its mesh, or an empty path; the linear `deflection`
///         in millimetres; whether measures of the exact geometry are wanted.
/// Gives   what is wrong, with the name of the file in front; empty if `model` is whole.
/// Errors  malformed numbers and faults of the kernel end the program, as they do the converter.
[[nodiscard]] std::string readCheckedModel(const std::string& input, const std::string& mesh,
                                           double deflection, bool withExact, CheckedModel& model);

}  // namespace plenvorith
