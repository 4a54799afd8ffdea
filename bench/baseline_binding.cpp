// The bare kernel as a Python module: reads a STEP file, meshes it with the arguments that the program
// uses and gives the triangles as an array, all in the process of the interpreter.
//
//   baseline_binding.load(path, deflection) -> (n, 3, 3) float32

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Message_ProgressRange.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPControl_Reader.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

namespace {

void appendTriangles(const TopoDS_Face& face, std::vector<float>& numbers) {
  TopLoc_Location location;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
  if (mesh.IsNull()) {
    return;
  }
  const gp_Trsf placement = location.Transformation();
  for (int i = 1; i <= mesh->NbTriangles(); ++i) {
    int corners[3] = {};
    mesh->Triangle(i).Get(corners[0], corners[1], corners[2]);
    if (face.Orientation() == TopAbs_REVERSED) {
      std::swap(corners[0], corners[1]);
    }
    for (const int corner : corners) {
      const gp_Pnt point = mesh->Node(corner).Transformed(placement);
      for (const double number : {point.X(), point.Y(), point.Z()}) {
        numbers.push_back(static_cast<float>(number));
      }
    }
  }
}

pybind11::array_t<float> load(const std::string& path, double deflection) {
  TopoDS_Shape shape;
  {
    STEPControl_Reader reader;
    if (reader.ReadFile(path.c_str()) != IFSelect_RetDone) {
      throw std::runtime_error("cannot be read");
    }
    reader.TransferRoots(Message_ProgressRange());
    shape = reader.OneShape();
  }
  BRepMesh_IncrementalMesh mesher(shape, deflection, false, 0.5, false);
  mesher.Perform(Message_ProgressRange());
  std::vector<float> numbers;
  for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
    appendTriangles(TopoDS::Face(faces.Current()), numbers);
  }
  const auto count = static_cast<pybind11::ssize_t>(numbers.size() / 9);
  return pybind11::array_t<float>({count, pybind11::ssize_t{3}, pybind11::ssize_t{3}},
                                  numbers.data());
}

}  // namespace

PYBIND11_MODULE(baseline_binding, module) {
  module.def("load", &load);
}
