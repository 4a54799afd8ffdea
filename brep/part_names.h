#pragma once

#include <string>
#include <vector>

#include "brep/brep_reader.h"
#include "brep/part_facts.h"

namespace plenvorith {

/// Reads a STEP file as `readBrepShapes` does, and `names` of its shapes in the same pass.
[[nodiscard]] bool readNamedShapes(const std::string& path, Shapes& shapes,
                                   std::vector<PartName>& names);

/// The names of shapes that a reader has just read.
///
/// Takes   the `reader`, and the `shapes` as `readBrepShapes` gives them.
/// Gives   a name for each shape, in their order; what the file does not name has an empty one. A
///         product without a name goes by its identifier.
std::vector<PartName> namesOfParts(const STEPControl_Reader& reader, const Shapes& shapes);

}  // namespace plenvorith
