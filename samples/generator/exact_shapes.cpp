#include "samples/generator/exact_shapes.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include <BRepAdaptor_Curve.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Shell.hxx>
#include <gp_Ax2.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

namespace plenvorith::samples {
namespace {

TopoDS_Shape cylinder(const gp_Pnt& foot, const gp_Dir& axis, double radius, double height) {
  return BRepPrimAPI_MakeCylinder(gp_Ax2(foot, axis), radius, height).Shape();
}

/// The edge whose middle is at `point`.
TopoDS_Edge edgeAt(const TopoDS_Shape& shape, const gp_Pnt& point) {
  for (TopExp_Explorer edges(shape, TopAbs_EDGE); edges.More(); edges.Next()) {
    const BRepAdaptor_Curve curve(TopoDS::Edge(edges.Current()));
    if (curve.Value((curve.FirstParameter() + curve.LastParameter()) / 2).IsEqual(point, 1e-6)) {
      return TopoDS::Edge(edges.Current());
    }
  }
  return {};
}

}  // namespace

TopoDS_Shape makeBracket() {
  constexpr double kWidth = 40;
  BRepBuilderAPI_MakePolygon profile;
  constexpr std::array<std::pair<double, double>, 6> kCorners = {
      {{0, 0}, {60, 0}, {60, 6}, {6, 6}, {6, 46}, {0, 46}}};
  for (const auto& [x, z] : kCorners) {
    profile.Add(gp_Pnt(x, 0, z));
  }
  profile.Close();
  const TopoDS_Shape angle =
      BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(profile.Wire()).Face(), gp_Vec(0, kWidth, 0));

  BRepFilletAPI_MakeFillet fillets(angle);
  fillets.Add(6, edgeAt(angle, {6, kWidth / 2, 6}));
  fillets.Add(12, edgeAt(angle, {0, kWidth / 2, 0}));
  for (const double y : {0.0, kWidth}) {
    fillets.Add(8, edgeAt(angle, {60, y, 3}));
    fillets.Add(8, edgeAt(angle, {3, y, 46}));
  }
  TopoDS_Shape bracket = fillets.Shape();
  for (const double y : {12.0, 28.0}) {
    bracket = BRepAlgoAPI_Cut(bracket, cylinder({44, y, -1}, {0, 0, 1}, 4, 8));
  }
  return BRepAlgoAPI_Cut(bracket, cylinder({-1, kWidth / 2, 30}, {1, 0, 0}, 8, 8));
}

TopoDS_Shape makeLamp() {
  const TopoDS_Builder builder;
  TopoDS_Compound lamp;
  builder.MakeCompound(lamp);
  builder.Add(lamp, cylinder({0, 0, 0}, {0, 0, 1}, 30, 4));
  builder.Add(lamp, cylinder({0, 0, 4}, {0, 0, 1}, 2.5, 46));
  builder.Add(lamp, BRepPrimAPI_MakeSphere(gp_Pnt(0, 0, 58), 8).Shape());

  BRepPrimAPI_MakeCone cone(gp_Ax2({0, 0, 42}, {0, 0, 1}), 28, 14, 32);
  TopoDS_Shell shade;
  builder.MakeShell(shade);
  builder.Add(shade, cone.Cone().LateralFace());
  builder.Add(lamp, shade);
  return lamp;
}

TopoDS_Shape makeFlange() {
  const gp_Dir up(0, 0, 1);
  TopoDS_Shape flange =
      BRepAlgoAPI_Fuse(cylinder({0, 0, 0}, up, 30, 6), cylinder({0, 0, 6}, up, 14, 16));
  flange = BRepAlgoAPI_Cut(flange, cylinder({0, 0, -1}, up, 9, 24));
  for (int i = 0; i < 6; ++i) {
    const double angle = std::numbers::pi / 3 * i;
    const gp_Pnt foot(22 * std::cos(angle), 22 * std::sin(angle), -1);
    flange = BRepAlgoAPI_Cut(flange, cylinder(foot, up, 3, 8));
  }
  return flange;
}

TopoDS_Shape makeRing() {
  return BRepPrimAPI_MakeTorus(gp_Ax2({0, 0, 0}, {0, 1, 0}), 9, 1.5).Shape();
}

}  // namespace plenvorith::samples
