#pragma once

#include <string>

#include "prepare/forecast.h"

namespace plenvorith {

/// What is doubtful about the mesh of a file that was converted as it is: what preparing it would
/// change. Empty if that is nothing.
///
/// Takes   what preparing would give, and the transcript of the conversion, which tells what the
///         converter took.
std::string meshDoubt(const Forecast& forecast, const std::string& transcript);

}  // namespace plenvorith
