#pragma once

#include <string>
#include <vector>

#include "brep/brep_reader.h"

namespace plenvorith {

/// What a file calls a part: bytes as the kernel hands them out, UTF-8 where the file is right.
struct PartName {
  std::vector<std::string> path;  ///< names of the products that it is used in, from the root down
  std::string name;               ///< that of the solid, shell or face
};

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
