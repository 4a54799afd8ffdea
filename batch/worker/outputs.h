#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/output.h"

namespace plenvorith {

/// What a conversion left in its folder.
struct MadeFiles {
  std::vector<OutputRecord> outputs;  ///< names in the folder, and sizes
  std::int64_t triangles = 0;         ///< of all STL files
  std::optional<Bounds> bounds;       ///< of all STL files
  std::string incomplete;  ///< the first of them that was not written to its end; or empty
};

/// Looks at the files in a folder. A binary STL file has to be as long as its number of triangles
/// says, a STEP file has to end like one.
MadeFiles lookAtOutputs(const std::string& folder);

}  // namespace plenvorith
