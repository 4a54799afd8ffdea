#pragma once

#include "prepare/part_tessellation.h"
#include "prepare/write_prepared.h"

namespace plenvorith {

/// Everything about a file that is decided before it is written.
struct Findings {
  PartTessellation part;
  Decisions decisions;
  Warnings warnings;
};

/// Takes   the instances of a file, and a reader to move about in it.
[[nodiscard]] Findings decide(const InstanceTable& table, StatementReader& again);

}  // namespace plenvorith
