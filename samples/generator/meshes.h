#pragma once

#include <vector>

#include <TopoDS_Shape.hxx>

#include "samples/generator/facets.h"

namespace plenvorith::samples {

/// The meshes of the faces of a shape, made by the kernel.
std::vector<Facets> meshFaces(const TopoDS_Shape& shape, double deflection);

}  // namespace plenvorith::samples
