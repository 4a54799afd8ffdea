#pragma once

#include <string>
#include <vector>

#include "check/checked_model.h"

namespace plenvorith {

/// What a person reads: a table of the parts that have a problem, or of all parts, the worst first,
/// and closing lines about the file.
std::vector<std::string> textReport(const CheckedModel& model, Reported reported);

/// The same of a mesh that stands for itself, without a table.
std::vector<std::string> textReport(const MeshFacts& mesh);

}  // namespace plenvorith
