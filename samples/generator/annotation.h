#pragma once

#include <string>

#include "samples/generator/step_entities.h"

namespace plenvorith::samples {

/// Appends the dimensions of the bracket, drawn as triangles: lines, arrows and digits. They hang
/// in a drawing and, tied to no product, in a tessellated representation of their own, as some
/// design systems write saved views.
void addAnnotation(Entities& entities, const std::string& context);

}  // namespace plenvorith::samples
