#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <TopoDS_Compound.hxx>
#include <gtest/gtest.h>

#include "app/pipeline_steps.h"
#include "brep/brep_mesher.h"
#include "brep/brep_reader.h"
#include "steptext/strip_tessellation.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// What is compared of two sets of exact shapes, in model units.
struct ExactGeometry {
  std::size_t solids = 0;
  std::size_t freeShells = 0;
  std::size_t freeFaces = 0;
  std::size_t others = 0;  ///< Curves, for example.
  double area = 0.0;
  double volume = 0.0;  ///< Of the solids.
  std::array<double, 3> least{};
  std::array<double, 3> greatest{};
  double looseness = 0.0;  ///< How far edges may be from the faces that they bound.
};

inline ExactGeometry geometryOf(const Shapes& shapes) {
  ExactGeometry geometry;
  const TopoDS_Compound all = makeCompound(shapes);
  geometry.looseness = BRep_Tool::MaxTolerance(all, TopAbs_EDGE);
  for (const TopoDS_Shape& shape : shapes) {
    GProp_GProps surface;
    BRepGProp::SurfaceProperties(shape, surface);
    geometry.area += surface.Mass();
    if (shape.ShapeType() == TopAbs_SOLID) {
      ++geometry.solids;
      GProp_GProps content;
      BRepGProp::VolumeProperties(shape, content);
      geometry.volume += content.Mass();
    } else if (shape.ShapeType() == TopAbs_SHELL) {
      ++geometry.freeShells;
    } else if (shape.ShapeType() == TopAbs_FACE) {
      ++geometry.freeFaces;
    } else {
      ++geometry.others;
    }
  }
  Bnd_Box box;
  constexpr bool kUseTriangulation = false;
  constexpr bool kUseTolerance = false;
  BRepBndLib::AddOptimal(all, box, kUseTriangulation, kUseTolerance);
  box.Get(geometry.least[0], geometry.least[1], geometry.least[2], geometry.greatest[0],
          geometry.greatest[1], geometry.greatest[2]);
  return geometry;
}

/// The exact geometry of a STEP file, whether or not it holds tessellation as well; nothing of a
/// file of which the kernel reads none.
inline ExactGeometry exactGeometryOrNone(const std::string& path) {
  Shapes shapes;
  (void)printedBy([&] {
    const std::string cleanPath = stripTessellation(path);
    (void)readBrepShapes(cleanPath, shapes);
    removeCleanCopy(cleanPath, path);
  });
  return shapes.empty() ? ExactGeometry{} : geometryOf(shapes);
}

inline ExactGeometry exactGeometryIn(const std::string& path) {
  const ExactGeometry geometry = exactGeometryOrNone(path);
  EXPECT_GT(geometry.solids + geometry.freeShells + geometry.freeFaces + geometry.others, 0U)
      << path;
  return geometry;
}

/// `fit` is how far area and volume may differ, `relative` all other lengths; both are ratios.
inline void expectGeometryWithin(const ExactGeometry& actual, const ExactGeometry& expected,
                                 double size, double relative, double fit) {
  EXPECT_EQ(actual.solids, expected.solids);
  EXPECT_EQ(actual.freeShells, expected.freeShells);
  EXPECT_EQ(actual.freeFaces, expected.freeFaces);
  EXPECT_EQ(actual.others, expected.others);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(actual.least.at(i), expected.least.at(i), relative * size);
    EXPECT_NEAR(actual.greatest.at(i), expected.greatest.at(i), relative * size);
  }
  EXPECT_NEAR(actual.area, expected.area, fit * expected.area);
  EXPECT_NEAR(actual.volume, expected.volume, fit * std::abs(expected.volume));
}

inline double sizeOf(const ExactGeometry& geometry) {
  double size = 0.0;
  for (std::size_t i = 0; i < 3; ++i) {
    size = std::max(size, geometry.greatest.at(i) - geometry.least.at(i));
  }
  return size;
}

/// For geometry that the kernel wrote anew; a free face becomes a shell of one face by that.
inline void expectSameGeometry(const ExactGeometry& actual, ExactGeometry expected) {
  constexpr double kRelative = 1e-6;
  expected.freeShells += std::exchange(expected.freeFaces, 0);
  const double size = sizeOf(expected);
  // Where edges are loose, the kernel fits them to the faces anew at every reading, and the faces
  // end a little further in or out.
  expectGeometryWithin(actual, expected, size, kRelative,
                       std::max(kRelative, expected.looseness / size));
}

/// For geometry that was copied as text.
inline void expectUntouchedGeometry(const ExactGeometry& actual, const ExactGeometry& expected) {
  constexpr double kRelative = 1e-9;
  expectGeometryWithin(actual, expected, sizeOf(expected), kRelative, kRelative);
}

/// A clean STEP file holds exact geometry and names no tessellated type.
inline void expectNoTessellatedType(const std::string& path) {
  const std::string text = readFile(path);
  EXPECT_NE(text, "") << path;
  for (const char* word : {"TESSELLATED_", "TRIANGULATED", "COORDINATES_LIST"}) {
    EXPECT_EQ(text.find(word), std::string::npos) << path << " names " << word;
  }
}

}  // namespace plenvorith::test
