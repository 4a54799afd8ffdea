#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "exchange/token_reader.h"
#include "prepare/index_list.h"
#include "prepare/index_mapping.h"
#include "prepare/output_file.h"

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
  const std::vector<bool>* huge =
      nullptr;  ///< points, from 0, whose triangles are skipped; may be null
  MappingLimits mappingLimits;
  std::size_t triangleLimit = std::size_t{1} << 20U;  ///< how many are looked up at once
};

/// What a face gave.
struct ExpandedFace {
  std::uint64_t triangles = 0;
  std::uint64_t skipped = 0;    ///< with an index outside the mapping or the list, or a huge point
  std::uint64_t equal = 0;      ///< left out as two of their corners are equal
  bool hasFailed = false;       ///< something stands where a number has to be
  bool mayHaveNormals = false;  ///< of a complex instance it is not known
  bool hasStrips = false;       ///< of more than one triangle
  bool hasFans = false;
  bool isMapped = false;                 ///< an index is not that of its point
  std::vector<SampledTriangle> samples;  ///< the first triangles
};

/// Takes the triangles of a face by their indices and writes them with those of the points in its
/// coordinates list, "(1,2,3),(4,5,6)".
///
/// Triangles with two equal indices of points are left out: once written, they could not be told
/// from those that join parts of strips, and preparing twice would give less than preparing once.
///
/// Memory  `FaceTarget::triangleLimit` triangles where the index mapping is too long to be held,
///         twelve bytes each and as much again when they are looked up; twice that if normals are
///         compared.
/// Cost    each so many triangles take at most one scan of such a mapping.
class FaceTriangles {
 public:
  /// Takes  a reader on the body of the face; how many points its coordinates list has; where to
  ///        write, or null if the triangles are to be counted only.
  FaceTriangles(TokenReader& tokens, std::uint64_t pointCount, const FaceTarget& target,
                OutputFile* output);

  /// Reads the index mapping, which comes before the triangles. False if that cannot be done.
  [[nodiscard]] bool readMapping() {
    const bool isRead = mapping_.read(tokens_);
    result.isMapped = !mapping_.isIdentity();
    return isRead;
  }

  void add(Index a, Index b, Index c);

  /// Adds a triangle of a strip or a fan, where one with two equal indices joins parts of it.
  void addJoined(Index a, Index b, Index c) {
    if (a != b && b != c && a != c) {
      add(a, b, c);
    } else {
      ++result.equal;
    }
  }

  /// Copies what is next of a list of triples as it is, where their indices need no change; false if
  /// the first of them is something else. Most of what real files hold is this.
  bool copyTriples();

  /// Notes a triangle that is none.
  void skip() {
    ++result.skipped;
  }

  /// Writes what waits for being looked up. Has to be called behind the last triangle.
  void flush();

  ExpandedFace result;

 private:
  using Corners = std::array<std::uint64_t, 3>;

  [[nodiscard]] const char* passTriple(const char* p) const;
  [[nodiscard]] Index pointOf(Index index) const;
  bool isHuge(const Corners& points) const;
  void addPoints(const Corners& given, const Corners& points);
  void write(const Corners& points);
  bool wantsSamples() const {
    return result.mayHaveNormals && result.samples.size() < maxSamples_;
  }

  TokenReader& tokens_;
  IndexMapping mapping_;
  std::uint64_t pointCount_;
  const std::vector<bool>* huge_;
  bool isMirrored_;
  std::size_t maxSamples_;
  std::size_t maxWaiting_;
  std::vector<std::uint32_t> waiting_;  // indices of triangles; 0: outside the mapping
  OutputFile* output_;
};

}  // namespace plenvorith
