#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "prepare/entity_types.h"
#include "prepare/output_file.h"
#include "prepare/part21.h"

namespace plenvorith {

/// A triangle of a face by its corners, counted from 1.
struct SampledTriangle {
  std::array<std::uint64_t, 3> normals =
      {};                                    ///< as the face has them: in its index mapping, and in
                                             ///< its list of normals
  std::array<std::uint64_t, 3> points = {};  ///< in the coordinates list
};

/// How a face is written.
struct FaceTarget {
  std::uint64_t name = 0;         ///< of the new face
  std::uint64_t coordinates = 0;  ///< the name of its new coordinates list
  bool isMirrored = false;        ///< two corners of each triangle change places
  std::size_t maxSamples = 0;     ///< how many triangles to give if the face has normals
};

/// What a face gave.
struct ExpandedFace {
  std::uint64_t triangles = 0;
  std::uint64_t skipped = 0;             ///< with an index outside the mapping or the list
  bool hasFailed = false;                ///< something stands where a number has to be
  bool mayHaveNormals = false;           ///< of a complex instance it is not known
  std::vector<SampledTriangle> samples;  ///< the first triangles
};

/// Expands a triangulated face or surface set, complex or not, of ISO 10303-42 into triples that
/// index its coordinates list directly, and writes it as a COMPLEX_TRIANGULATED_FACE with these.
///
/// Takes   a reader at the body of the face; how many points its coordinates list has; where to
///         write, or null if the triangles are to be counted only.
/// Order   of a strip (s1,s2,s3), (s2,s4,s3), (s3,s4,s5), ...; of a fan (f1,f2,f3), (f1,f3,f4), ...
///         Triangles with two equal indices, mapped or not, are left out: those of strips and fans
///         join parts of them, and a triple would be taken for such a joint the next time.
/// Memory  four bytes for an entry of the index mapping of the face (pnindex).
[[nodiscard]] ExpandedFace expandFace(StatementReader& reader, const EntityType& type,
                                      std::uint64_t pointCount, const FaceTarget& target,
                                      OutputFile* output);

}  // namespace plenvorith
