#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "check/checked_model.h"

namespace plenvorith {

/// Whether nothing leads out of the inside of a mesh. One without triangles has no inside.
bool isClosed(const MeshFacts& mesh);

/// How far measures are from others; nothing where one of the two is not known.
struct MeasureDifferences {
  std::optional<double> volume;    ///< relative: 0.01 is one percent more than the others
  std::optional<double> area;      ///< relative
  std::optional<double> centroid;  ///< a distance
};
MeasureDifferences differencesOf(const PartMeasures& measures, const PartMeasures& others);

/// The measures of a mesh, placed in the model.
PartMeasures measuresOf(const MeshFacts& mesh);

/// The measures to compare with what a file states of a part: the exact ones where they are known.
PartMeasures bestMeasures(const CheckedPart& part);

/// The same for all parts together; where there are solids, they alone make up the whole.
PartMeasures bestMeasures(const CheckedModel& model);

/// Whether a part cannot be trusted: a solid that is open, empty or inside out, a face without mesh,
/// or a mesh that is farther from a surface than was asked for. An open shell or face is no
/// problem. What the file states is one only beside exact measures that are known, as those of a
/// mesh differ by their nature.
bool hasProblem(const CheckedPart& part);

/// What a model comes to.
struct ModelTotals {
  std::size_t parts = 0;
  std::size_t partsWithProblems = 0;
  std::size_t openSolids = 0;
  std::int64_t facesWithoutMesh = 0;
  std::int64_t facesOverDeflection = 0;
  double deviation = 0.0;  ///< the largest
  std::uint64_t triangles = 0;
  double volume = 0.0;  ///< of the meshes of all parts that are closed
};
ModelTotals totalsOf(const CheckedModel& model);

/// Whether what the file states of all parts together is off; the same holds.
bool hasProblemOfTheWhole(const CheckedModel& model);

}  // namespace plenvorith
