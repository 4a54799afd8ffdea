#pragma once

#include "samples/generator/step_entities.h"

namespace plenvorith::samples {

/// A flange coupling as design systems write tessellation: an assembly in inches of two halves, six
/// bolts and six nuts. Each part stands once in the file; its faces share one list of points, into
/// which each has a mapping of its own, and consist of strips and fans.
Entities couplingEntities();

}  // namespace plenvorith::samples
