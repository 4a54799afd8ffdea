// Writes a STEP file of exact geometry through the kernel, the same for the same arguments.
//
//   generate_exact plates|assembly|surfaces MEGABYTES OUTPUT
//   generate_exact uses PARTS OUTPUT
//   generate_exact quilt FACES OUTPUT
//
// "plates" are few large plates, each with many drilled holes and rounded edges; "assembly" is many
// small distinct solids; "surfaces" are free-form faces that belong to no solid. The size comes out
// roughly as asked for. "uses" is an assembly that places each of its parts ten times; "quilt" is one
// part of so many small free-form faces.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Interface_Static.hxx>
#include <STEPControl_Writer.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>

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

/// A free-form face of n x n poles.
TopoDS_Shape freeForm(const TColgp_Array2OfPnt& poles) {
  constexpr int kDegree = 3;
  const int knotCount = poles.ColLength() - kDegree + 1;
  TColStd_Array1OfReal knots(1, knotCount);
  TColStd_Array1OfInteger multiplicities(1, knotCount);
  for (int i = 1; i <= knotCount; ++i) {
    knots(i) = i;
    multiplicities(i) = i == 1 || i == knotCount ? kDegree + 1 : 1;
  }
  const Handle(Geom_BSplineSurface) shape = new Geom_BSplineSurface(
      poles, knots, knots, multiplicities, multiplicities, kDegree, kDegree);
  constexpr double kTolerance = 1e-6;
  return BRepBuilderAPI_MakeFace(shape, kTolerance).Face();
}

/// One wavy face, its corner at (x, y, 0).
TopoDS_Shape surface(double x, double y, std::mt19937_64& random) {
  constexpr int kPoles = 16;
  std::uniform_real_distribution<double> height(-2.0, 2.0);
  TColgp_Array2OfPnt poles(1, kPoles, 1, kPoles);
  for (int i = 1; i <= kPoles; ++i) {
    for (int j = 1; j <= kPoles; ++j) {
      poles(i, j) = gp_Pnt(x + 5.0 * i, y + 5.0 * j, height(random));
    }
  }
  return freeForm(poles);
}

/// One face with straight edges and its middle higher or lower, its corner at (x, y, 0).
TopoDS_Shape cushion(double x, double y, double side, std::mt19937_64& random) {
  constexpr int kPoles = 4;
  std::uniform_real_distribution<double> height(-2.0, 2.0);
  TColgp_Array2OfPnt poles(1, kPoles, 1, kPoles);
  for (int i = 1; i <= kPoles; ++i) {
    for (int j = 1; j <= kPoles; ++j) {
      const bool isInside = i > 1 && i < kPoles && j > 1 && j < kPoles;
      poles(i, j) = gp_Pnt(x + side * (i - 1) / (kPoles - 1), y + side * (j - 1) / (kPoles - 1),
                           isInside ? height(random) : 0);
    }
  }
  return freeForm(poles);
}

/// A quilt of small free-form faces, sewn along straight seams.
TopoDS_Shape quilt(int faces, std::mt19937_64& random) {
  constexpr double kSide = 5.0;
  const int columns = static_cast<int>(std::ceil(std::sqrt(faces)));
  BRepBuilderAPI_Sewing sewing;
  for (int i = 0; i < faces; ++i) {
    sewing.Add(cushion(kSide * (i % columns), kSide * (i / columns), kSide, random));
  }
  sewing.Perform();
  return sewing.SewedShape();
}

/// Adds every part ten times, in a row.
void addUses(TopoDS_Compound& compound, int parts, std::mt19937_64& random) {
  constexpr int kUses = 10;
  const TopoDS_Builder builder;
  for (int part = 0; part < parts; ++part) {
    const TopoDS_Shape shape =
        TopExp_Explorer(plate(2, 2, 25.0 * part, 0, random), TopAbs_SOLID).Current();
    for (int use = 0; use < kUses; ++use) {
      gp_Trsf move;
      move.SetTranslation(gp_Vec(25.0 * use, 0, 0));
      builder.Add(compound, shape.Moved(TopLoc_Location(move)));
    }
  }
  Interface_Static::SetIVal("write.step.assembly", 1);
}

/// What one solid or face takes in the file, measured.
double megabytesOf(const char* kind) {
  return std::strcmp(kind, "plates") == 0     ? 0.30
         : std::strcmp(kind, "assembly") == 0 ? 0.084
                                              : 0.026;
}

TopoDS_Shape piece(const char* kind, int i, std::mt19937_64& random) {
  if (std::strcmp(kind, "surfaces") == 0) {
    return surface((i % 10) * 90.0, (i / 10) * 90.0, random);
  }
  const int side = std::strcmp(kind, "plates") == 0 ? 8 : 2;
  return plate(side, side, (i % 10) * (10.0 * side + 5), (i / 10) * 10.0, random);
}

TopoDS_Shape model(const char* kind, double size) {
  std::mt19937_64 random(kSeed);
  if (std::strcmp(kind, "quilt") == 0) {
    return quilt(static_cast<int>(size), random);
  }
  TopoDS_Compound compound;
  const TopoDS_Builder builder;
  builder.MakeCompound(compound);
  if (std::strcmp(kind, "uses") == 0) {
    addUses(compound, static_cast<int>(size), random);
    return compound;
  }
  const int count = std::max(1, static_cast<int>(size / megabytesOf(kind) + 0.5));
  for (int i = 0; i < count; ++i) {
    builder.Add(compound, piece(kind, i, random));
  }
  return compound;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: generate_exact plates|assembly|surfaces|uses|quilt SIZE OUTPUT\n");
    return 2;
  }
  STEPControl_Writer writer;  // sets up the kernel's parameters
  writer.Transfer(model(argv[1], std::strtod(argv[2], nullptr)), STEPControl_AsIs);
  return writer.Write(argv[3]) == IFSelect_RetDone ? 0 : 1;
}
