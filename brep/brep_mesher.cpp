#include "brep/brep_mesher.h"

#include <utility>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Message_ProgressRange.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>

namespace plenvorith {
namespace {

void appendTriangles(const TopoDS_Face& face, std::vector<Triangle>& triangles) {
  TopLoc_Location location;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
  if (mesh.IsNull()) {
    return;
  }
  const gp_Trsf placement = location.Transformation();
  const auto vertex = [&](int node) {
    gp_Pnt point = mesh->Node(node);
    point.Transform(placement);
    return Point3{point.X(), point.Y(), point.Z()};
  };
  const bool reversed = face.Orientation() == TopAbs_REVERSED;
  for (int i = 1; i <= mesh->NbTriangles(); ++i) {
    int a = 0;
    int b = 0;
    int c = 0;
    mesh->Triangle(i).Get(a, b, c);
    if (reversed) {
      std::swap(a, b);
    }
    triangles.push_back(makeTriangle(vertex(a), vertex(b), vertex(c)));
  }
}

}  // namespace

TopoDS_Compound makeCompound(const Shapes& shapes) {
  TopoDS_Compound compound;
  const TopoDS_Builder builder;
  builder.MakeCompound(compound);
  for (const TopoDS_Shape& shape : shapes) {
    if (!shape.IsNull()) {
      builder.Add(compound, shape);
    }
  }
  return compound;
}

bool meshShape(const TopoDS_Shape& shape, double deflection) {
  constexpr bool kRelative = false;
  constexpr double kAngularDeflection = 0.5;
  constexpr bool kInParallel = false;
  // The constructor meshes already. Whether a second pass finds anything left to do is up to the
  // release of the kernel; on what is meshed well enough it costs next to nothing.
  BRepMesh_IncrementalMesh mesher(shape, deflection, kRelative, kAngularDeflection, kInParallel);
  mesher.Perform(Message_ProgressRange());
  return mesher.IsDone();
}

std::vector<Triangle> meshBrepShapes(const Shapes& shapes, double deflection) {
  const TopoDS_Compound compound = makeCompound(shapes);
  // Faces without a mesh are passed over below.
  (void)meshShape(compound, deflection);
  std::vector<Triangle> triangles;
  for (TopExp_Explorer explorer(compound, TopAbs_FACE); explorer.More(); explorer.Next()) {
    appendTriangles(TopoDS::Face(explorer.Current()), triangles);
  }
  return triangles;
}

}  // namespace plenvorith
