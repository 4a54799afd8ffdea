#pragma once

#include <vector>

#include "brep/brep_reader.h"
#include "brep/part_facts.h"

namespace plenvorith {

/// What a file says of its own geometry, for its reader to compare.
struct StatedMeasures {
  std::vector<PartMeasures> parts;  ///< of each shape, in their order; placed in the model
  PartMeasures whole;               ///< of all shapes together, where there are several
};

/// The geometric validation properties (ISO 10303-42, as -214 and -242 use them) of what a reader
/// has just read: volumes, areas and centres of gravity of products that consist of one shape, and
/// of the product that is the whole model. Values with units that are not built from lengths are
/// passed over.
StatedMeasures statedMeasures(const STEPControl_Reader& reader, const Shapes& shapes);

}  // namespace plenvorith
