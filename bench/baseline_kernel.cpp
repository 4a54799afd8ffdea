// The bare kernel: reads a STEP file and meshes it with the arguments that the program uses, counts
// the triangles and writes nothing. The reader is gone before the mesher starts, as in the program.
// Default allocator.
//
//   baseline_kernel INPUT DEFLECTION

#include <cstdio>
#include <cstdlib>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Message_ProgressRange.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPControl_Reader.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>

#include "bench/stopwatch.h"

namespace {

/// All that can be transferred; null if the file cannot be read.
TopoDS_Shape readShape(const char* path) {
  STEPControl_Reader reader;
  if (reader.ReadFile(path) != IFSelect_RetDone) {
    return {};
  }
  reader.TransferRoots(Message_ProgressRange());
  return reader.OneShape();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const plenvorith::bench::Stopwatch stopwatch;
  TopoDS_Compound compound;
  const TopoDS_Builder builder;
  builder.MakeCompound(compound);
  const TopoDS_Shape shape = readShape(argv[1]);
  if (shape.IsNull()) {
    return 1;
  }
  builder.Add(compound, shape);
  BRepMesh_IncrementalMesh mesher(compound, std::strtod(argv[2], nullptr), false, 0.5, false);
  mesher.Perform(Message_ProgressRange());

  int triangles = 0;
  for (TopExp_Explorer faces(compound, TopAbs_FACE); faces.More(); faces.Next()) {
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh =
        BRep_Tool::Triangulation(TopoDS::Face(faces.Current()), location);
    triangles += mesh.IsNull() ? 0 : mesh->NbTriangles();
  }
  std::printf("triangles %d\n", triangles);
  stopwatch.report();
  return 0;
}
