#pragma once

#include "common/instance_names.h"
#include "steptext/entity_table.h"

namespace plenvorith {

/// How the tessellation of a file stands to its exact geometry. The numbers index the names that
/// the pipelines print.
enum class TessellationStatus : int {
  NoTessellation = 0,    ///< no tessellated shape representation
  AllPaired = 1,         ///< every one is paired with a plain shape representation
  PartiallyUnique = 2,   ///< at least one is paired and at least one is not
  TessellationOnly = 3,  ///< none is paired, whatever exact geometry the file holds beside it
};

/// What `analyzeTessellation` found. All sets are empty for `NoTessellation`.
struct TessellationAnalysis {
  TessellationStatus status = TessellationStatus::NoTessellation;
  InstanceNames pairedReps;   ///< tessellated representations that have an exact twin
  InstanceNames uniqueReps;   ///< tessellated representations that have none
  InstanceNames uniqueFaces;  ///< complex triangulated faces of the solids of `uniqueReps`
};

/// Finds out from the entities' texts alone which tessellation duplicates exact geometry.
///
/// A tessellated representation is paired when a shape representation relationship (ISO 10303-43)
/// names it together with an entity written as plain SHAPE_REPRESENTATION, in either order; of
/// several tessellated representations in one relationship only the last is. The faces of a unique
/// representation are looked for in its tessellated solids (ISO 10303-42) and nowhere else.
///
/// Errors  none: texts and references that fit nothing are passed over.
/// Cost    up to two walks over the table, the second one through every text.
TessellationAnalysis analyzeTessellation(const EntityTable& table);

}  // namespace plenvorith
