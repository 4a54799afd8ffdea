#pragma once

#include <vector>

#include <TopoDS_Face.hxx>

#include "brep/brep_reader.h"
#include "brep/part_facts.h"

namespace plenvorith {

/// How far the mesh of a face is from its surface.
///
/// The centre of each triangle and the middles of its sides are compared with the points of the
/// surface at their parameters. These may be farther away than the surface is, so that where they
/// are farther than the `limit` the nearest point is looked for, from there and, as another part of
/// the surface may be nearer still, by the kernel's projection.
///
/// Takes   a face with a mesh that holds parameters; all of the kernel's meshes of surfaces do.
/// Gives   the distance if it is more than `limit`; else it, or something larger up to `limit`.
double deviationOf(const TopoDS_Face& face, double limit);

/// The facts of the faces of each shape, once the shapes are meshed with this deflection. Geometry
/// that stands in several places is looked at once.
std::vector<FaceFacts> measureFaces(const Shapes& shapes, double deflection);

}  // namespace plenvorith
