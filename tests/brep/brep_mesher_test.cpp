#include "brep/brep_mesher.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Message_ProgressRange.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <gmock/gmock.h>
#include <gp_Ax1.hxx>

#include "tests/support/kernel_shapes.h"
#include "tests/support/mesh_measures.h"

namespace plenvorith {
namespace {

using test::boxAt;
using test::flatFace;
using test::translation;
using testing::IsEmpty;

constexpr double kDeflection = 0.1;

void expectPoint(const Point3& point, double x, double y, double z) {
  EXPECT_NEAR(point.x, x, 1e-12);
  EXPECT_NEAR(point.y, y, 1e-12);
  EXPECT_NEAR(point.z, z, 1e-12);
}

void expectSamePoint(const Point3& a, const Point3& b) {
  EXPECT_EQ(a.x, b.x);
  EXPECT_EQ(a.y, b.y);
  EXPECT_EQ(a.z, b.z);
}

void expectSameTriangles(const std::vector<Triangle>& a, const std::vector<Triangle>& b) {
  ASSERT_EQ(a.size(), b.size());
  EXPECT_EQ(std::memcmp(a.data(), b.data(), a.size() * sizeof(Triangle)), 0);
}

/// A face that is nothing but two triangles, the first of them with two corners at one place.
TopoDS_Face faceWithADegenerateTriangle() {
  const Handle(Poly_Triangulation) mesh = new Poly_Triangulation(4, 2, false);
  mesh->SetNode(1, gp_Pnt(0, 0, 0));
  mesh->SetNode(2, gp_Pnt(0, 0, 0));
  mesh->SetNode(3, gp_Pnt(5, 0, 0));
  mesh->SetNode(4, gp_Pnt(0, 5, 0));
  mesh->SetTriangle(1, Poly_Triangle(1, 2, 3));
  mesh->SetTriangle(2, Poly_Triangle(1, 3, 4));
  TopoDS_Face face;
  BRep_Builder().MakeFace(face, mesh);
  return face;
}

TEST(BrepMesher, BoxIsTwelveTrianglesWithNormalsToTheOutside) {
  const std::vector<Triangle> triangles = meshBrepShapes({boxAt(0)}, kDeflection);
  ASSERT_EQ(triangles.size(), 12u);
  EXPECT_NEAR(test::areaOf(triangles), 2200, 1e-9);
  EXPECT_NEAR(test::volumeOf(triangles), 6000, 1e-9);
  const Point3 centre = {5, 10, 15};
  for (const Triangle& t : triangles) {
    EXPECT_NEAR(test::length(t.normal), 1, 1e-12);
    EXPECT_GT(test::dot(t.normal, test::difference(t.v1, centre)), 0);
    for (const Point3& p : test::cornersOf(t)) {
      EXPECT_TRUE(p.x == 0 || p.x == 10);
      EXPECT_TRUE(p.y == 0 || p.y == 20);
      EXPECT_TRUE(p.z == 0 || p.z == 30);
    }
  }
}

TEST(BrepMesher, MeshesLikeTheKernelWithAnAngleOfHalfARadian) {
  // Coarse, so that the angle decides how many triangles there are, and not the deflection.
  constexpr double kCoarse = 1;
  const TopoDS_Shape torus = BRepPrimAPI_MakeTorus(5, 2).Shape();
  BRepMesh_IncrementalMesh mesher(torus, kCoarse, false, 0.5, false);
  mesher.Perform(Message_ProgressRange());
  std::size_t expected = 0;
  for (TopExp_Explorer faces(torus, TopAbs_FACE); faces.More(); faces.Next()) {
    TopLoc_Location location;
    expected += static_cast<std::size_t>(
        BRep_Tool::Triangulation(TopoDS::Face(faces.Current()), location)->NbTriangles());
  }
  EXPECT_EQ(meshBrepShapes({BRepPrimAPI_MakeTorus(5, 2).Shape()}, kCoarse).size(), expected);
}

TEST(BrepMesher, ReversedFaceExchangesTheFirstTwoCorners) {
  const TopoDS_Face face = flatFace();
  const std::vector<Triangle> forward = meshBrepShapes({face}, kDeflection);
  const std::vector<Triangle> reversed = meshBrepShapes({face.Reversed()}, kDeflection);
  ASSERT_EQ(forward.size(), 2u);
  ASSERT_EQ(reversed.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    expectPoint(forward[i].normal, 0, 0, 1);
    expectPoint(reversed[i].normal, 0, 0, -1);
    expectSamePoint(reversed[i].v1, forward[i].v2);
    expectSamePoint(reversed[i].v2, forward[i].v1);
    expectSamePoint(reversed[i].v3, forward[i].v3);
  }
}

TEST(BrepMesher, InternalAndExternalFacesKeepTheOrderOfTheCorners) {
  const TopoDS_Face face = flatFace();
  const std::vector<Triangle> forward = meshBrepShapes({face}, kDeflection);
  expectSameTriangles(meshBrepShapes({face.Oriented(TopAbs_INTERNAL)}, kDeflection), forward);
  expectSameTriangles(meshBrepShapes({face.Oriented(TopAbs_EXTERNAL)}, kDeflection), forward);
}

TEST(BrepMesher, ReversedSolidTurnsItsFaces) {
  const TopoDS_Shape box = boxAt(0);
  EXPECT_NEAR(test::volumeOf(meshBrepShapes({box}, kDeflection)), 6000, 1e-9);
  EXPECT_NEAR(test::volumeOf(meshBrepShapes({box.Reversed()}, kDeflection)), -6000, 1e-9);
}

TEST(BrepMesher, MovedFaceHasItsCornersAtTheNewPlace) {
  const TopoDS_Face face = flatFace();
  const std::vector<Triangle> here = meshBrepShapes({face}, kDeflection);
  const std::vector<Triangle> there =
      meshBrepShapes({face.Moved(translation(100, 200, 300))}, kDeflection);
  ASSERT_EQ(here.size(), 2u);
  ASSERT_EQ(there.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    expectPoint(there[i].normal, 0, 0, 1);
    for (std::size_t corner = 0; corner < 3; ++corner) {
      const Point3 from = test::cornersOf(here[i]).at(corner);
      expectPoint(test::cornersOf(there[i]).at(corner), from.x + 100, from.y + 200, from.z + 300);
    }
  }
}

TEST(BrepMesher, NormalFollowsTheTurnedCorners) {
  gp_Trsf quarterTurn;
  quarterTurn.SetRotation(gp_Ax1({0, 0, 0}, {1, 0, 0}), std::numbers::pi / 2);
  const std::vector<Triangle> triangles =
      meshBrepShapes({flatFace().Moved(TopLoc_Location(quarterTurn))}, kDeflection);
  ASSERT_EQ(triangles.size(), 2u);
  for (const Triangle& t : triangles) {
    expectPoint(t.normal, 0, -1, 0);
    EXPECT_NEAR(t.v1.y, 0, 1e-12);
  }
}

TEST(BrepMesher, KeepsADegenerateTriangleWithItsNormalOfZero) {
  const std::vector<Triangle> triangles =
      meshBrepShapes({faceWithADegenerateTriangle()}, kDeflection);
  ASSERT_EQ(triangles.size(), 2u);
  expectSamePoint(triangles[0].normal, {0, 0, 0});
  expectSamePoint(triangles[0].v1, {0, 0, 0});
  expectSamePoint(triangles[0].v2, {0, 0, 0});
  expectSamePoint(triangles[0].v3, {5, 0, 0});
  expectSamePoint(triangles[1].normal, {0, 0, 1});
}

TEST(BrepMesher, IgnoresNullShapes) {
  EXPECT_EQ(meshBrepShapes({TopoDS_Shape(), boxAt(0), TopoDS_Shape()}, kDeflection).size(), 12u);
  EXPECT_THAT(meshBrepShapes({TopoDS_Shape()}, kDeflection), IsEmpty());
}

TEST(BrepMesher, ShapesWithoutFacesGiveNoTriangles) {
  EXPECT_THAT(meshBrepShapes({}, kDeflection), IsEmpty());
  const TopoDS_Shape edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Shape();
  EXPECT_THAT(meshBrepShapes({edge}, kDeflection), IsEmpty());
}

TEST(BrepMesher, SkipsAFaceThatCannotBeMeshed) {
  TopoDS_Face faceWithoutSurface;
  BRep_Builder().MakeFace(faceWithoutSurface);
  EXPECT_EQ(meshBrepShapes({faceWithoutSurface, boxAt(0)}, kDeflection).size(), 12u);
}

TEST(BrepMesher, PrintsNothing) {
  EXPECT_EQ(test::printedBy([] { (void)meshBrepShapes({}, kDeflection); }), "");
  EXPECT_EQ(test::printedBy([] { (void)meshBrepShapes({boxAt(0)}, kDeflection); }), "");
}

TEST(BrepMesher, TrianglesComeInTheOrderOfTheShapes) {
  const TopoDS_Shape near = boxAt(0);
  const TopoDS_Shape far = boxAt(100);
  const std::vector<Triangle> nearFirst = meshBrepShapes({near, far}, kDeflection);
  const std::vector<Triangle> farFirst = meshBrepShapes({far, near}, kDeflection);
  ASSERT_EQ(nearFirst.size(), 24u);
  ASSERT_EQ(farFirst.size(), 24u);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_LE(nearFirst[i].v1.x, 10);
    EXPECT_GE(nearFirst[i + 12].v1.x, 100);
    EXPECT_GE(farFirst[i].v1.x, 100);
    EXPECT_LE(farFirst[i + 12].v1.x, 10);
  }
}

TEST(BrepMesher, TrianglesOfAShapeComeInTheOrderOfItsFacesAndOfTheirMeshes) {
  const TopoDS_Shape box = boxAt(0);
  const std::vector<Triangle> triangles = meshBrepShapes({box}, kDeflection);
  std::size_t next = 0;
  for (TopExp_Explorer faces(box, TopAbs_FACE); faces.More(); faces.Next()) {
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh =
        BRep_Tool::Triangulation(TopoDS::Face(faces.Current()), location);
    ASSERT_FALSE(mesh.IsNull());
    for (int i = 1; i <= mesh->NbTriangles(); ++i, ++next) {
      std::array<int, 3> nodes{};
      mesh->Triangle(i).Get(nodes[0], nodes[1], nodes[2]);
      const gp_Pnt last = mesh->Node(nodes[2]);
      ASSERT_LT(next, triangles.size());
      expectSamePoint(triangles[next].v3, {last.X(), last.Y(), last.Z()});
    }
  }
  EXPECT_EQ(next, 12u);
}

TEST(BrepMesher, FaceInTwoShapesComesTwice) {
  const TopoDS_Shape box = boxAt(0);
  const std::vector<Triangle> triangles = meshBrepShapes({box, box}, kDeflection);
  ASSERT_EQ(triangles.size(), 24u);
  const auto middle = triangles.begin() + 12;
  expectSameTriangles({triangles.begin(), middle}, {middle, triangles.end()});
}

TEST(BrepMesher, MeshingTwiceGivesTheSameTrianglesInTheSameOrder) {
  const TopoDS_Shape sphere = BRepPrimAPI_MakeSphere(10).Shape();
  const std::vector<Triangle> first = meshBrepShapes({sphere}, kDeflection);
  expectSameTriangles(meshBrepShapes({sphere}, kDeflection), first);
  expectSameTriangles(meshBrepShapes({BRepPrimAPI_MakeSphere(10).Shape()}, kDeflection), first);
}

/// How far the middles of the triangles and of their edges are from a sphere around the origin.
double distanceFromSphere(const std::vector<Triangle>& triangles, double radius) {
  double distance = 0.0;
  for (const Triangle& t : triangles) {
    const auto check = [&](const Point3& p) {
      distance = std::max(distance, std::abs(radius - test::length(p)));
    };
    const auto [a, b, c] = test::cornersOf(t);
    check({(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2});
    check({(b.x + c.x) / 2, (b.y + c.y) / 2, (b.z + c.z) / 2});
    check({(c.x + a.x) / 2, (c.y + a.y) / 2, (c.z + a.z) / 2});
    check({(a.x + b.x + c.x) / 3, (a.y + b.y + c.y) / 3, (a.z + b.z + c.z) / 3});
  }
  return distance;
}

TEST(BrepMesher, SmallerDeflectionGivesMoreTrianglesNearerToTheSurface) {
  std::size_t lastCount = 0;
  for (const double deflection : {0.3, 0.1, 0.03}) {
    const std::vector<Triangle> triangles =
        meshBrepShapes({BRepPrimAPI_MakeSphere(10).Shape()}, deflection);
    EXPECT_GT(triangles.size(), lastCount);
    lastCount = triangles.size();
    for (const Triangle& t : triangles) {
      for (const Point3& p : test::cornersOf(t)) {
        ASSERT_NEAR(test::length(p), 10, 1e-6);
      }
    }
    // The kernel aims at the deflection and may miss it by a little.
    EXPECT_LT(distanceFromSphere(triangles, 10), 1.5 * deflection);
    EXPECT_NEAR(test::volumeOf(triangles), 4188.79, 4188.79 * deflection);
  }
}

TEST(BrepMesher, AngularDeflectionLimitsWhatALargeDeflectionAllows) {
  // Half a radian to a chord: more than 12 chords around the equator.
  const std::vector<Triangle> triangles =
      meshBrepShapes({BRepPrimAPI_MakeSphere(10).Shape()}, 1000.0);
  EXPECT_GT(triangles.size(), 24u);
  EXPECT_LT(distanceFromSphere(triangles, 10), 2.5);
}

TEST(BrepMesher, DeflectionIsInModelUnitsWhateverTheSizeOfTheShape) {
  const std::size_t small = meshBrepShapes({BRepPrimAPI_MakeSphere(1).Shape()}, kDeflection).size();
  const std::size_t large =
      meshBrepShapes({BRepPrimAPI_MakeSphere(100).Shape()}, kDeflection).size();
  EXPECT_GT(large, 10 * small);
}

TEST(BrepMesher, CompoundHoldsTheShapesInTheirOrderWithoutNulls) {
  const TopoDS_Shape first = boxAt(0);
  const TopoDS_Shape second = flatFace();
  const TopoDS_Compound compound = makeCompound({first, TopoDS_Shape(), second});
  ASSERT_EQ(compound.NbChildren(), 2);
  TopoDS_Iterator children(compound);
  EXPECT_TRUE(children.Value().IsSame(first));
  children.Next();
  EXPECT_TRUE(children.Value().IsSame(second));
  EXPECT_EQ(makeCompound({}).NbChildren(), 0);
}

TEST(BrepMesher, MeshStaysWithTheFaces) {
  const TopoDS_Face face = flatFace();
  EXPECT_TRUE(meshShape(face, kDeflection));
  TopLoc_Location location;
  EXPECT_FALSE(BRep_Tool::Triangulation(face, location).IsNull());
}

}  // namespace
}  // namespace plenvorith
