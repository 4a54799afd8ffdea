#pragma once

#include <string>
#include <vector>

#include "check/checked_model.h"

namespace plenvorith {

/// One JSON object for each part that has a problem, or for each part, in the order of the model,
/// and one for the file. Texts that are no UTF-8 are escaped: see `portable`.
std::vector<std::string> jsonReport(const CheckedModel& model, Reported reported);

/// One JSON object for a mesh that stands for itself.
std::string jsonReport(const MeshFacts& mesh);

}  // namespace plenvorith
