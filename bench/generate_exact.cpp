// Writes a STEP file of exact geometry through the kernel, the same for the same arguments.
//
//   generate_exact plates|assembly MEGABYTES OUTPUT
//
// "plates" are few large plates, each with many drilled holes and rounded edges; "assembly" is many
// small distinct solids. The size comes out roughly as asked for.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <STEPControl_Writer.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <gp_Ax2.hxx>

namespace {

constexpr std::uint64_t kSeed = 20240229;

/// A plate with rounded edges and columns x rows holes of varying size, its corner at (0, y, z).
TopoDS_Shape plate(int columns, int rows, double y, double z, std::mt19937_64& random) {
  std::uniform_real_distribution<double> radius(1.0, 3.0);
  const TopoDS_Shape box =
      BRepPrimAPI_MakeBox(gp_Pnt(0, y, z), 10.0 * columns, 10.0 * rows, 5.0).Shape();
  BRepFilletAPI_MakeFillet fillet(box);
  for (TopExp_Explorer edges(box, TopAbs_EDGE); edges.More(); edges.Next()) {
    fillet.Add(1.0, TopoDS::Edge(edges.Current()));
  }
  TopTools_ListOfShape plates;
  plates.Append(fillet.Shape());
  TopTools_ListOfShape drills;
  for (int column = 0; column < columns; ++column) {
    for (int row = 0; row < rows; ++row) {
      const gp_Pnt foot(10.0 * column + 5, y + 10.0 * row + 5, z - 1);
      drills.Append(
          BRepPrimAPI_MakeCylinder(gp_Ax2(foot, gp_Dir(0, 0, 1)), radius(random), 7).Shape());
    }
  }
  BRepAlgoAPI_Cut cut;
  cut.SetArguments(plates);
  cut.SetTools(drills);
  cut.Build();
  return cut.Shape();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: generate_exact plates|assembly MEGABYTES OUTPUT\n");
    return 2;
  }
  const double megabytes = std::strtod(argv[2], nullptr);
  const bool plates = std::strcmp(argv[1], "plates") == 0;
  // Measured: what one solid of either kind takes in the file.
  const int columns = plates ? 8 : 2;
  const int rows = plates ? 8 : 2;
  const double solidMegabytes = plates ? 0.30 : 0.084;
  const int count = std::max(1, static_cast<int>(megabytes / solidMegabytes + 0.5));
  std::mt19937_64 random(kSeed);
  TopoDS_Compound compound;
  const TopoDS_Builder builder;
  builder.MakeCompound(compound);
  for (int i = 0; i < count; ++i) {
    builder.Add(compound,
                plate(columns, rows, (i % 10) * (10.0 * rows + 5), (i / 10) * 10.0, random));
  }
  STEPControl_Writer writer;
  writer.Transfer(compound, STEPControl_AsIs);
  return writer.Write(argv[3]) == IFSelect_RetDone ? 0 : 1;
}
