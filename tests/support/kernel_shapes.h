#pragma once

#include <string>
#include <vector>

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <IFSelect_ReturnStatus.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <STEPControl_Writer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>
#include <gtest/gtest.h>

namespace plenvorith::test {

/// Keeps the kernel's own lines off standard output, for this process.
inline void silenceKernel() {
  Message::DefaultMessenger()->ChangePrinters().Clear();
}

/// What `action` prints on standard output, the kernel's own lines left out.
template <typename Action>
std::string printedBy(Action action) {
  silenceKernel();
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

/// A box with one corner at (x, 0, 0) and the opposite one at (x + 10, 20, 30).
inline TopoDS_Shape boxAt(double x) {
  return BRepPrimAPI_MakeBox(gp_Pnt(x, 0, 0), 10, 20, 30).Shape();
}

/// A flat face, 4 by 3, in the plane z = 0; its normal is (0, 0, 1).
inline TopoDS_Face flatFace() {
  return BRepBuilderAPI_MakeFace(gp_Pln(), 0, 4, 0, 3).Face();
}

/// A sheet of two faces at a right angle, from x = 0 to x = 10.
inline TopoDS_Shape bentSheet() {
  BRepBuilderAPI_MakePolygon profile(gp_Pnt(0, 0, 5), gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0));
  return BRepPrimAPI_MakePrism(profile.Wire(), gp_Vec(0, 20, 0)).Shape();
}

inline TopoDS_Compound compoundOf(const std::vector<TopoDS_Shape>& shapes) {
  const TopoDS_Builder builder;
  TopoDS_Compound compound;
  builder.MakeCompound(compound);
  for (const TopoDS_Shape& shape : shapes) {
    builder.Add(compound, shape);
  }
  return compound;
}

inline TopLoc_Location translation(double x, double y, double z) {
  gp_Trsf move;
  move.SetTranslation(gp_Vec(x, y, z));
  return TopLoc_Location(move);
}

/// Writes a STEP file in which every shape is a product of its own, and returns its path.
inline std::string writeStepFile(const std::string& path, const std::vector<TopoDS_Shape>& shapes) {
  silenceKernel();
  STEPControl_Writer writer;
  for (const TopoDS_Shape& shape : shapes) {
    EXPECT_EQ(writer.Transfer(shape, STEPControl_AsIs), IFSelect_RetDone);
  }
  EXPECT_EQ(writer.Write(path.c_str()), IFSelect_RetDone);
  return path;
}

}  // namespace plenvorith::test
