#include "brep/face_deviation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_BezierSurface.hxx>
#include <Geom_Parabola.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Poly_Triangulation.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gmock/gmock.h>
#include <gp_Ax2.hxx>

#include "brep/brep_mesher.h"
#include "tests/support/kernel_shapes.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::compoundOf;
using test::translation;
using testing::DoubleNear;
using testing::Ge;
using testing::Le;

/// The first face of a kind of surface.
TopoDS_Face curvedFaceOf(const TopoDS_Shape& shape) {
  for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next()) {
    const TopoDS_Face& face = TopoDS::Face(explorer.Current());
    if (!BRep_Tool::Surface(face)->IsKind(STANDARD_TYPE(Geom_Plane))) {
      return face;
    }
  }
  return {};
}

/// The largest distance of the centres of a mesh's triangles and their sides from a surface, by the
/// formula of the surface.
double distanceByFormula(const TopoDS_Face& face, const std::function<double(gp_XYZ)>& distance) {
  TopLoc_Location place;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, place);
  double largest = 0;
  for (int i = 1; i <= mesh->NbTriangles(); ++i) {
    int a = 0;
    int b = 0;
    int c = 0;
    mesh->Triangle(i).Get(a, b, c);
    const gp_XYZ p = mesh->Node(a).XYZ();
    const gp_XYZ q = mesh->Node(b).XYZ();
    const gp_XYZ r = mesh->Node(c).XYZ();
    for (const gp_XYZ& sample : {(p + q + r) / 3, (p + q) / 2, (q + r) / 2, (r + p) / 2}) {
      largest = std::max(largest, std::abs(distance(sample)));
    }
  }
  return largest;
}

double fromAxis(const gp_XYZ& point) {
  return std::hypot(point.X(), point.Y());
}

void expectFormula(const TopoDS_Shape& shape, const std::function<double(gp_XYZ)>& distance) {
  for (const double deflection : {1.0, 0.1, 0.01}) {
    meshShape(shape, deflection);
    const TopoDS_Face face = curvedFaceOf(shape);
    const double expected = distanceByFormula(face, distance);
    EXPECT_GT(expected, 0);
    EXPECT_THAT(deviationOf(face, 0.0), DoubleNear(expected, 1e-9));
    // Without a search it is not less.
    EXPECT_THAT(deviationOf(face, 100.0), Ge(expected - 1e-12));
  }
}

TEST(FaceDeviation, OfASphereIsThatOfItsFormula) {
  expectFormula(BRepPrimAPI_MakeSphere(10).Shape(),
                [](const gp_XYZ& point) { return 10 - point.Modulus(); });
}

TEST(FaceDeviation, OfATorusIsThatOfItsFormula) {
  expectFormula(BRepPrimAPI_MakeTorus(10, 3).Shape(), [](const gp_XYZ& point) {
    return 3 - std::hypot(fromAxis(point) - 10, point.Z());
  });
}

TEST(FaceDeviation, OfACylinderIsThatOfItsFormula) {
  expectFormula(BRepPrimAPI_MakeCylinder(5, 20).Shape(),
                [](const gp_XYZ& point) { return 5 - fromAxis(point); });
}

TEST(FaceDeviation, OfAConeIsThatOfItsFormula) {
  // Its side leads from radius 8 to radius 2 over a height of 8, at an angle of 3 : 4.
  expectFormula(BRepPrimAPI_MakeCone(8, 2, 8).Shape(),
                [](const gp_XYZ& point) { return (8 - 0.75 * point.Z() - fromAxis(point)) * 0.8; });
}

TEST(FaceDeviation, OfAPlaneIsNone) {
  const TopoDS_Shape box = boxAt(1000);
  meshShape(box, 0.1);
  TopExp_Explorer face(box, TopAbs_FACE);
  EXPECT_THAT(deviationOf(TopoDS::Face(face.Current()), 0.0), Le(1e-12));
  // Nor at the parameters themselves.
  EXPECT_THAT(deviationOf(TopoDS::Face(face.Current()), 100.0), Le(1e-12));
}

/// A face whose surface leads along a parabola, extruded in y.
TopoDS_Face bezierFace(const gp_Pnt& start, const gp_Pnt& middle, const gp_Pnt& end) {
  TColgp_Array2OfPnt poles(1, 3, 1, 2);
  int row = 1;
  for (const gp_Pnt& pole : {start, middle, end}) {
    poles(row, 1) = pole;
    poles(row, 2) = pole.Translated(gp_Vec(0, 10, 0));
    ++row;
  }
  return BRepBuilderAPI_MakeFace(new Geom_BezierSurface(poles), 1e-7).Face();
}

TEST(FaceDeviation, LooksForTheNearestPoint) {
  // A flat surface whose parameters run slowly first and fast then: at the middle of a triangle's
  // parameters it is somewhere else, but not farther away.
  const TopoDS_Face face = bezierFace({0, 0, 0}, {0, 0, 0}, {10, 0, 0});
  meshShape(face, 0.1);
  EXPECT_THAT(deviationOf(face, 100.0), Ge(1.0));
  EXPECT_THAT(deviationOf(face, 0.1), Le(0.1));
  EXPECT_THAT(deviationOf(face, 1e-3), Le(1e-3));
  // However little the limit is below the distance at the parameters.
  const double atParameters = deviationOf(face, 100.0);
  EXPECT_THAT(deviationOf(face, atParameters * 0.99), Le(atParameters * 0.9));
}

/// Gives a face a mesh of one triangle.
void giveMesh(const TopoDS_Face& face, const std::array<gp_Pnt, 3>& points,
              const std::array<gp_Pnt2d, 3>& parameters) {
  const Handle(Poly_Triangulation) mesh = new Poly_Triangulation(3, 1, true);
  for (int i = 0; i < 3; ++i) {
    mesh->SetNode(i + 1, points[static_cast<std::size_t>(i)]);
    mesh->SetUVNode(i + 1, parameters[static_cast<std::size_t>(i)]);
  }
  mesh->SetTriangle(1, Poly_Triangle(1, 2, 3));
  BRep_Builder().UpdateFace(face, mesh);
}

TEST(FaceDeviation, LooksAtOtherPartsOfTheSurface) {
  // A hairpin: the parameters are those of the lower leg, the points lie on the upper one.
  const TopoDS_Face face = bezierFace({0, 0, 0}, {100, 0, 2}, {0, 0, 4});
  const auto onUpperLeg = [](double u, double y) {
    return gp_Pnt(200 * u * (1 - u), y, 4 * u * (1 - u) + 4 * u * u);
  };
  giveMesh(face, {onUpperLeg(0.9, 0), onUpperLeg(0.9, 10), onUpperLeg(0.899, 10)},
           {gp_Pnt2d(0.1, 0), gp_Pnt2d(0.1, 1), gp_Pnt2d(0.101, 0.5)});
  EXPECT_THAT(deviationOf(face, 100.0), Ge(3.0));
  // The legs are 3.2 apart: so much is confirmed or not, however little it is beyond the limit.
  for (const double limit : {0.1, 1.0, 2.8, 3.0, 3.19}) {
    EXPECT_THAT(deviationOf(face, limit), Le(0.1)) << limit;
  }
}

TEST(FaceDeviation, FindsTheNearestPointOfABorder) {
  // Beside the ends of an extruded parabola, where the kernel's projection finds nothing: at a
  // distance from the point of parameter 0.3, whose normal is (-8, 10) / sqrt(164), on either side.
  const TopoDS_Face face = bezierFace({0, 0, 0}, {5, 0, 10}, {10, 0, 0});
  for (const double height : {3.0, -3.0}) {
    for (const double start : {0.1, 0.5}) {
      for (const double beside : {0.5, -0.5}) {
        const gp_Pnt point(3 - height * 8 / std::sqrt(164), beside > 0 ? 10.5 : -0.5,
                           4.2 + height * 10 / std::sqrt(164));
        const gp_Pnt2d parameters(start, beside > 0 ? 0.9 : 0.1);
        giveMesh(face, {point, point, point}, {parameters, parameters, parameters});
        EXPECT_THAT(deviationOf(face, 0.1), DoubleNear(std::hypot(height, beside), 1e-9))
            << height << ' ' << start << ' ' << beside;
      }
    }
  }
}

TEST(FaceDeviation, LooksALittleBeyondTheMeshOfACylinder) {
  // A cylinder has no end, so that the kernel looks where the mesh is. The parameters are those of
  // the side behind the axis, and a little short of the points.
  const TopoDS_Face face = curvedFaceOf(BRepPrimAPI_MakeCylinder(5, 20).Shape());
  for (const double ahead : {0.9, -0.9}) {
    const double end = ahead > 0 ? 10 : 0;
    const auto onSurface = [ahead](double u, double v) {
      return gp_Pnt(5 * std::cos(u), 5 * std::sin(u), v + ahead);
    };
    giveMesh(face, {onSurface(1, 10 - end), onSurface(1, end), onSurface(1.01, end)},
             {gp_Pnt2d(1 + M_PI, 10 - end), gp_Pnt2d(1 + M_PI, end), gp_Pnt2d(1.01 + M_PI, end)});
    EXPECT_THAT(deviationOf(face, 100.0), Ge(9.0));
    EXPECT_THAT(deviationOf(face, 0.01), Le(0.01)) << ahead;
  }
}

TEST(FaceDeviation, LooksALittleBeyondTheMeshOfAnExtrudedParabola) {
  // It has no end along the parabola, either: (u * u, u). The parameters are those of one branch, the
  // points of two corners lie on the other, a little farther out than the third.
  const Handle(Geom_Surface) surface = new Geom_SurfaceOfLinearExtrusion(
      new Geom_Parabola(gp_Ax2(gp_Pnt(), gp_Dir(0, 0, 1), gp_Dir(1, 0, 0)), 0.25), gp_Dir(0, 0, 1));
  for (const double side : {1.0, -1.0}) {
    const TopoDS_Face face = BRepBuilderAPI_MakeFace(surface, -10, 10, 0, 1, 1e-7).Face();
    const auto onSurface = [side](double u, double v) { return gp_Pnt(u * u, side * u, v); };
    giveMesh(face, {onSurface(11.8, 0), onSurface(11.8, 1), onSurface(10, 0)},
             {gp_Pnt2d(-side * 10, 0), gp_Pnt2d(-side * 10, 1), gp_Pnt2d(side * 10, 0)});
    EXPECT_THAT(deviationOf(face, 1000.0), Ge(20.0));
    EXPECT_THAT(deviationOf(face, 0.1), Le(0.1)) << side;
  }
}

TEST(FaceDeviation, TellsTheDistanceOfWhatIsFar) {
  const TopoDS_Face face = test::flatFace();
  giveMesh(face, {gp_Pnt(0, 0, 3), gp_Pnt(4, 0, 3), gp_Pnt(0, 3, 3)},
           {gp_Pnt2d(0, 0), gp_Pnt2d(4, 0), gp_Pnt2d(0, 3)});
  EXPECT_THAT(deviationOf(face, 0.1), DoubleNear(3, 1e-12));
}

TEST(FaceDeviation, DoesNotDependOnThePlace) {
  const TopoDS_Shape torus = BRepPrimAPI_MakeTorus(10, 3).Shape();
  meshShape(torus, 0.5);
  const double deviation = deviationOf(curvedFaceOf(torus), 0.0);
  const TopoDS_Shape moved = torus.Moved(translation(1000, -200, 30));
  EXPECT_THAT(deviationOf(curvedFaceOf(moved), 0.0), DoubleNear(deviation, 1e-9));
}

TEST(FaceDeviation, TakesSurfacesThatStandElsewhereThanTheirFaces) {
  const TopoDS_Face face = test::flatFace();
  TopLoc_Location ignored;
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, ignored);
  BRep_Builder().UpdateFace(face, surface, translation(0, 0, 7), 1e-7);
  giveMesh(face, {gp_Pnt(0, 0, 7), gp_Pnt(4, 0, 7), gp_Pnt(0, 3, 7)},
           {gp_Pnt2d(0, 0), gp_Pnt2d(4, 0), gp_Pnt2d(0, 3)});
  EXPECT_THAT(deviationOf(face, 0.0), Le(1e-12));
  EXPECT_THAT(deviationOf(TopoDS::Face(face.Moved(translation(5, 6, 8))), 0.0), Le(1e-12));
}

TEST(FaceFacts, CountFacesAndTriangles) {
  const Shapes shapes = {boxAt(0), boxAt(50), test::flatFace()};
  meshShape(compoundOf(shapes), 0.1);
  const std::vector<FaceFacts> facts = measureFaces(shapes, 0.1);
  ASSERT_EQ(facts.size(), 3U);
  EXPECT_EQ(facts[0].faces, 6);
  EXPECT_EQ(facts[0].triangles, 12U);
  EXPECT_EQ(facts[1].faces, 6);
  EXPECT_EQ(facts[2].faces, 1);
  EXPECT_EQ(facts[2].triangles, 2U);
  EXPECT_EQ(facts[0].withoutMesh + facts[1].withoutMesh + facts[2].withoutMesh, 0);
}

TEST(FaceFacts, TellOfFacesWithoutMesh) {
  const TopoDS_Shape box = boxAt(0);
  meshShape(box, 0.1);
  TopExp_Explorer face(box, TopAbs_FACE);
  BRep_Builder().UpdateFace(TopoDS::Face(face.Current()), Handle(Poly_Triangulation)());
  const FaceFacts facts = measureFaces({box}, 0.1).front();
  EXPECT_EQ(facts.faces, 6);
  EXPECT_EQ(facts.withoutMesh, 1);
  EXPECT_EQ(facts.triangles, 10U);
}

TEST(FaceFacts, TellOfFacesBeyondTheDeflectionOnly) {
  const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(5, 20).Shape();
  meshShape(cylinder, 0.1);
  const double deviation = deviationOf(curvedFaceOf(cylinder), 0.0);
  const FaceFacts within = measureFaces({cylinder}, deviation * (1 + 1e-9)).front();
  EXPECT_EQ(within.overDeflection, 0);
  EXPECT_THAT(within.deviation, DoubleNear(deviation, 1e-9));
  const FaceFacts beyond = measureFaces({cylinder}, deviation * (1 - 1e-9)).front();
  EXPECT_EQ(beyond.overDeflection, 1);
  EXPECT_THAT(beyond.deviation, DoubleNear(deviation, 1e-9));
}

TEST(FaceFacts, AreThoseOfEachPlace) {
  const TopoDS_Shape sphere = BRepPrimAPI_MakeSphere(10).Shape();
  const Shapes shapes = {sphere, sphere.Moved(translation(50, 0, 0))};
  meshShape(compoundOf(shapes), 0.5);
  const std::vector<FaceFacts> facts = measureFaces(shapes, 0.1);
  EXPECT_EQ(facts[0].overDeflection, 1);
  EXPECT_EQ(facts[1].overDeflection, 1);
  EXPECT_EQ(facts[0].deviation, facts[1].deviation);
}

TEST(FaceFacts, CountAFaceOfOneTriangleAsMeshed) {
  BRepBuilderAPI_MakePolygon border(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0), gp_Pnt(0, 1, 0), true);
  const TopoDS_Face face = BRepBuilderAPI_MakeFace(border.Wire()).Face();
  meshShape(face, 0.1);
  const FaceFacts facts = measureFaces({face}, 0.1).front();
  EXPECT_EQ(facts.triangles, 1U);
  EXPECT_EQ(facts.withoutMesh, 0);
}

}  // namespace
}  // namespace plenvorith
