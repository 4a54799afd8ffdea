#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace plenvorith {

/// What the converter would get of a file that is prepared, and what of it the converter leaves out or
/// takes for something else if the file is not.
struct Forecast {
  bool hasExact = false;        ///< there is exact geometry
  std::uint64_t triangles = 0;  ///< of part tessellation, in all its places and with flat ones
  bool hasStrips = false;       ///< of more than one triangle
  bool hasFans = false;
  bool isMapped = false;       ///< the index mapping of a face is not that of each index to itself
  bool isScaled = false;       ///< a unit is not the millimetre
  bool isPlaced = false;       ///< a body stands elsewhere, or several times
  bool hasAnnotation = false;  ///< tessellation of annotation, features or properties
  bool hasOrphans = false;     ///< exact geometry that no product has
};

/// Tells what preparing a file would do for its mesh, without writing anything.
///
/// Takes   the path of a file that can be read twice.
/// Gives   nothing for a file that cannot be prepared.
/// Prints  nothing.
/// Cost    one pass over the file, and one over its triangles.
/// Memory  as `prepareFile`.
[[nodiscard]] std::optional<Forecast> forecastPreparation(const std::string& inputPath);

}  // namespace plenvorith
