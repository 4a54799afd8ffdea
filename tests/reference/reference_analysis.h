#pragma once

#include "steptext/entity_table.h"
#include "steptext/tessellation_analysis.h"

namespace plenvorith::test {

/// `analyzeTessellation` by regular expression, step by step.
TessellationAnalysis referenceAnalysis(const EntityTable& table);

}  // namespace plenvorith::test
