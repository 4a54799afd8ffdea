#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "brep/part_facts.h"
#include "check/mesh_facts.h"

namespace plenvorith {

/// A part and what is known of its mesh. Decoded tessellation is one part without a number; its
/// kind and mesh are all that is known of it.
struct CheckedPart {
  std::optional<std::size_t> number;  ///< that of its file in split mode
  BrepPart part;
  MeshFacts mesh;
};

/// All parts of a file, in the order of the mesh.
struct CheckedModel {
  std::vector<CheckedPart> parts;
  double deflection = 0.1;  ///< millimetres
  bool withExact = false;   ///< exact measures were asked for
  bool hasMesh = false;     ///< a mesh was given, and it is that of the file
  PartMeasures stated;      ///< what the file says of all parts together
};

/// Which parts of a model are reported.
enum class Reported { Problems, All };

}  // namespace plenvorith
