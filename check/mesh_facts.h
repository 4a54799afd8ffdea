#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "check/mesh_measure.h"
#include "common/triangle.h"

namespace plenvorith {

/// What a mesh tells of itself.
struct MeshFacts {
  MeshMeasure measure;
  std::uint64_t openEdges = 0;  ///< 0: the mesh is closed
  std::uint64_t pieces = 0;     ///< that share no vertex
};

/// The facts of triangles as an STL file holds them: each number rounded to 32 bits.
MeshFacts meshFactsOf(std::span<const Triangle> triangles);

/// The facts of the binary STL file at `path`, which is read twice.
///
/// Gives   what is wrong with the file, as `readBinaryStl` tells it; empty if `facts` are whole.
/// Cost    at most 60 bytes a triangle, and half of that for a mesh whose triangles share vertices.
[[nodiscard]] std::string readMeshFacts(const std::string& path, MeshFacts& facts);

}  // namespace plenvorith
