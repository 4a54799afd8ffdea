#pragma once

#include "steptext/tessellation_analysis.h"
#include "tests/support/entity_texts.h"

namespace plenvorith::test {

/// `analyzeTessellation` by regular expression, step by step.
TessellationAnalysis referenceAnalysis(const EntityTexts& table);

}  // namespace plenvorith::test
