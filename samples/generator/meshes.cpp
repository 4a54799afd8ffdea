#include "samples/generator/meshes.h"

#include <array>
#include <cstddef>
#include <utility>

#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt.hxx>

#include "brep/brep_mesher.h"

namespace plenvorith::samples {

std::vector<Facets> meshFaces(const TopoDS_Shape& shape, double deflection) {
  (void)meshShape(shape, deflection);
  std::vector<Facets> meshes;
  for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
    const TopoDS_Face face = TopoDS::Face(faces.Current());
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
    Facets facets;
    for (int i = 1; i <= mesh->NbNodes(); ++i) {
      const gp_Pnt p = mesh->Node(i).Transformed(location.Transformation());
      facets.points.push_back({p.X(), p.Y(), p.Z()});
    }
    for (int i = 1; i <= mesh->NbTriangles(); ++i) {
      std::array<int, 3> nodes{};
      mesh->Triangle(i).Get(nodes[0], nodes[1], nodes[2]);
      if (face.Orientation() == TopAbs_REVERSED) {
        std::swap(nodes[0], nodes[1]);
      }
      facets.triangles.push_back({static_cast<std::size_t>(nodes[0]),
                                  static_cast<std::size_t>(nodes[1]),
                                  static_cast<std::size_t>(nodes[2])});
    }
    meshes.push_back(facets);
  }
  return meshes;
}

}  // namespace plenvorith::samples
