#pragma once

#include <cstdint>
#include <vector>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"
#include "prepare/expand_face.h"

namespace plenvorith {

/// How the normals that a file stores lie to its triangles. Of several faces the largest counts.
enum class NormalsVerdict {
  NoNormals,
  Unclear,     ///< at right angles, or there is no normal for a corner
  Against,     ///< all that can be compared: on the side from which the corners go round clockwise
  NotAgainst,  ///< one at least is on the other side, or it would take too long to tell
};

/// Compares triangles of a face with their normals, which are as many as the index mapping has
/// entries, or the coordinates list points, or one for all (ISO 10303-42).
///
/// Takes   a reader to move about in the file; the face and its coordinates list; triangles of it;
///         how many normals and points may be read over, which becomes less.
/// Memory  for the given triangles only.
[[nodiscard]] NormalsVerdict compareNormals(StatementReader& reader, const InstanceTable& table,
                                            InstanceIndex face, InstanceIndex coordinates,
                                            const std::vector<SampledTriangle>& triangles,
                                            std::uint64_t& budget);

}  // namespace plenvorith
