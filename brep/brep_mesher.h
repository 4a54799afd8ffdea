#pragma once

#include <vector>

#include <TopoDS_Compound.hxx>

#include "brep/brep_reader.h"
#include "common/triangle.h"

namespace plenvorith {

/// Puts all shapes that are not null into one compound, in their order.
TopoDS_Compound makeCompound(const Shapes& shapes);

/// Meshes a shape with the kernel's incremental mesher; the mesh stays attached to its faces.
///
/// Takes   the linear `deflection` in model units: how far the mesh may be from the surface. The
///         angular deflection is 0.5 radians.
/// Gives   whether the mesher says that it is done.
/// Errors  those of the kernel pass, for example for a deflection that is too small for it.
bool meshShape(const TopoDS_Shape& shape, double deflection);

/// Meshes all shapes at once, so that shared edges are divided once, and collects their triangles.
///
/// Gives   the triangles of every face in the order of the shapes, placed in the model, vertices
///         counter-clockwise seen from outside. A face that could not be meshed gives none.
/// Errors  those of the kernel pass.
std::vector<Triangle> meshBrepShapes(const Shapes& shapes, double deflection);

}  // namespace plenvorith
