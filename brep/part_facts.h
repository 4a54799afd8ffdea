#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/triangle.h"

namespace plenvorith {

/// What a part is and what a file calls it: bytes as the kernel hands them out, UTF-8 where the file
/// is right.
struct PartName {
  const char* kind = "solid";     ///< or "shell", "face", "other"
  std::vector<std::string> path;  ///< names of the products that it is used in, from the root down
  std::string name;               ///< that of the solid, shell or face
  std::array<double, 12> placement{};  ///< three rows of a 3 by 4 matrix: from its own frame
};

/// What the mesh of a part's faces is worth. Lengths are in millimetres, as the kernel's are.
struct FaceFacts {
  std::uint64_t triangles = 0;
  int faces = 0;
  int withoutMesh = 0;     ///< faces without a triangle
  int overDeflection = 0;  ///< faces whose mesh is farther from their surface than was asked for
  double deviation = 0.0;  ///< how far the mesh is from the surfaces at most
};

/// Measures of a part, in the model. A part that encloses nothing has no volume and no centroid.
struct PartMeasures {
  std::optional<double> volume;
  std::optional<double> area;
  std::optional<Point3> centroid;
};

/// One of the pieces that a model is meshed in.
struct BrepPart : PartName {
  FaceFacts faces;
  PartMeasures exact;   ///< empty unless asked for
  PartMeasures stated;  ///< what the file itself says
};

/// A model and its mesh.
struct BrepModel {
  std::vector<BrepPart> parts;      ///< in the order of the pieces
  std::vector<Triangle> triangles;  ///< of all parts, in their order
  PartMeasures stated;              ///< what the file says of all parts together
};

}  // namespace plenvorith
