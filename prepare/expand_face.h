#pragma once

#include <cstdint>

#include "exchange/entity_types.h"
#include "exchange/statement_reader.h"
#include "prepare/face_triangles.h"
#include "prepare/output_file.h"

namespace plenvorith {

/// Expands a triangulated face or surface set, complex or not, of ISO 10303-42 into triples that
/// index its coordinates list directly, and writes it as a COMPLEX_TRIANGULATED_FACE with these.
///
/// Takes   a reader at the body of the face, which it moves about in; how many points its coordinates
///         list has; where to write, or null if the triangles are to be counted only.
/// Order   of a strip (s1,s2,s3), (s2,s4,s3), (s3,s4,s5), ...; of a fan (f1,f2,f3), (f1,f3,f4), ...
///         Triangles with two equal indices, mapped or not, are left out: those of strips and fans
///         join parts of them, and a triple would be taken for such a joint the next time.
/// Memory  at most some forty megabytes, whatever the length of the lists: four bytes for an entry
///         of the index mapping of the face (pnindex) up to `MappingLimits::held` of them. The
///         entries of a longer one are read again for each `FaceTarget::triangleLimit` triangles, all
///         or some of them as the triangles need: with indices in no order, the time of m triangles
///         and a mapping of n entries grows with m + n * m / 1,000,000.
[[nodiscard]] ExpandedFace expandFace(StatementReader& reader, const EntityType& type,
                                      std::uint64_t pointCount, const FaceTarget& target,
                                      OutputFile* output);

}  // namespace plenvorith
