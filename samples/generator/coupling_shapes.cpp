#include "samples/generator/coupling_shapes.h"

#include <cmath>
#include <numbers>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <gp_Ax1.hxx>
#include <gp_Ax2.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

namespace plenvorith::samples {
namespace {

TopoDS_Shape cylinderAt(double x, double y, double z, double radius, double height) {
  return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(x, y, z), gp_Dir(0, 0, 1)), radius, height).Shape();
}

/// A hexagonal prism, 13 mm across its flats.
TopoDS_Shape hexagon(double z, double height) {
  constexpr double kAcrossFlats = 13;
  const double radius = kAcrossFlats / std::sqrt(3.0);
  BRepBuilderAPI_MakePolygon outline;
  for (int i = 0; i < 6; ++i) {
    const double angle = std::numbers::pi / 3 * i;
    outline.Add(gp_Pnt(radius * std::cos(angle), radius * std::sin(angle), z));
  }
  outline.Close();
  return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(), gp_Vec(0, 0, height))
      .Shape();
}

}  // namespace

TopoDS_Shape makeCouplingHalf() {
  constexpr double kOuter = 55;
  constexpr double kHub = 27;
  constexpr double kBore = 16;
  constexpr double kHeight = 52;
  constexpr double kChamfer = 2;
  constexpr double kStep = 1.5;
  constexpr double kCollar = 32;
  BRepBuilderAPI_MakePolygon profile;
  profile.Add(gp_Pnt(kBore, 0, 0));
  profile.Add(gp_Pnt(kOuter - kChamfer, 0, 0));
  profile.Add(gp_Pnt(kOuter, 0, kChamfer));
  profile.Add(gp_Pnt(kOuter, 0, kCouplingFlange - kChamfer));
  profile.Add(gp_Pnt(kOuter - kChamfer, 0, kCouplingFlange));
  profile.Add(gp_Pnt(kCollar, 0, kCouplingFlange));
  profile.Add(gp_Pnt(kHub, 0, kCouplingFlange + kCollar - kHub));
  profile.Add(gp_Pnt(kHub, 0, kHeight - kStep));
  profile.Add(gp_Pnt(kHub - kStep, 0, kHeight));
  profile.Add(gp_Pnt(kBore, 0, kHeight));
  profile.Close();
  TopoDS_Shape half = BRepPrimAPI_MakeRevol(BRepBuilderAPI_MakeFace(profile.Wire()).Face(),
                                            gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)))
                          .Shape();
  for (int i = 0; i < kCouplingHoles; ++i) {
    const double angle = std::numbers::pi / 3 * i;
    half = BRepAlgoAPI_Cut(
        half, cylinderAt(kCouplingHoleCircle * std::cos(angle),
                         kCouplingHoleCircle * std::sin(angle), -1, 4.5, kCouplingFlange + 2));
  }
  const TopoDS_Shape key =
      BRepPrimAPI_MakeBox(gp_Pnt(0, -5, -1), gp_Pnt(kBore + 3.3, 5, kHeight + 1)).Shape();
  return BRepAlgoAPI_Cut(half, key);
}

TopoDS_Shape makeCouplingBolt() {
  constexpr double kHead = 5.3;
  return BRepAlgoAPI_Fuse(hexagon(-kHead, kHead), cylinderAt(0, 0, 0, 4, 2 * kCouplingFlange + 10));
}

TopoDS_Shape makeCouplingNut() {
  constexpr double kHeight = 6.8;
  return BRepAlgoAPI_Cut(hexagon(0, kHeight), cylinderAt(0, 0, -1, 4, kHeight + 2));
}

}  // namespace plenvorith::samples
