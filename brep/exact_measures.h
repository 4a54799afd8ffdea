#pragma once

#include <TopoDS_Shape.hxx>

#include "brep/part_facts.h"

namespace plenvorith {

/// The measures of exact geometry, by the kernel's integrals over its faces.
///
/// Gives  the area; of a solid the volume and the centre of gravity, too. The volume of a solid that
///        is inside out is negative.
PartMeasures exactMeasures(const TopoDS_Shape& shape);

}  // namespace plenvorith
