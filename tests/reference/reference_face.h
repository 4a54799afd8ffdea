#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/reference/reference_model.h"

namespace plenvorith::test {

inline const Names kFaceTypes = {"TRIANGULATED_FACE", "COMPLEX_TRIANGULATED_FACE",
                                 "TRIANGULATED_SURFACE_SET", "COMPLEX_TRIANGULATED_SURFACE_SET"};

/// The attributes of a triangulated face or surface set, whichever of the four it is.
struct Face {
  Parameter coordinates;
  Parameter link;
  Parameters pnindex;
  Parameters triangles;
  Parameters strips;
  Parameters fans;
};

Face faceOf(const Model& model, const std::string& name);

/// Three places in the coordinates list, from 1; 0 is none.
using Corners = std::array<std::size_t, 3>;

/// All triangles of a face whose list has so many points.
std::vector<Corners> trianglesOf(const Face& face, std::size_t points);

}  // namespace plenvorith::test
