// Compares how far the meshes of the files in the folder PLENVORITH_CORPUS are said to be from their
// surfaces with the kernel's projection of every sample. All files are prepared first, so that exact
// geometry beside tessellation takes part.

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <gmock/gmock.h>

#include "brep/brep_mesher.h"
#include "brep/face_deviation.h"
#include "tests/corpus/corpus_files.h"
#include "tests/support/captured_cout.h"
#include "tests/support/kernel_shapes.h"
#include "tests/support/scoped_tmpdir.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

constexpr double kDeflection = 0.1;

/// A vertex of a mesh, or a point between some.
struct MeshPoint {
  gp_XYZ place;
  gp_XY parameters;
};

MeshPoint middleOf(const std::vector<MeshPoint>& points) {
  MeshPoint middle;
  for (const MeshPoint& point : points) {
    middle.place += point.place;
    middle.parameters += point.parameters;
  }
  middle.place /= static_cast<double>(points.size());
  middle.parameters /= static_cast<double>(points.size());
  return middle;
}

/// The centres of the triangles of a face and of their sides.
std::vector<MeshPoint> samplesOf(const TopoDS_Face& face) {
  TopLoc_Location place;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, place);
  std::vector<MeshPoint> samples;
  for (int i = 1; !mesh.IsNull() && i <= mesh->NbTriangles(); ++i) {
    std::array<MeshPoint, 3> corners;
    for (int k = 0; k < 3; ++k) {
      const int node = mesh->Triangle(i).Value(k + 1);
      corners[static_cast<std::size_t>(k)] = {
          mesh->Node(node).Transformed(place.Transformation()).XYZ(), mesh->UVNode(node).XY()};
    }
    const auto& [a, b, c] = corners;
    for (const MeshPoint& sample :
         {middleOf({a, b, c}), middleOf({a, b}), middleOf({b, c}), middleOf({c, a})}) {
      samples.push_back(sample);
    }
  }
  return samples;
}

/// The least distance of a point from a surface that can be found by trying neighbours, nearer and
/// nearer ones. It gets along with borders, where the nearest point is no foot of a perpendicular.
double searchedDistance(const Geom_Surface& surface, const MeshPoint& sample) {
  double lowU = 0;
  double highU = 0;
  double lowV = 0;
  double highV = 0;
  surface.Bounds(lowU, highU, lowV, highV);
  const auto distanceAt = [&](const gp_XY& at) {
    return surface.Value(at.X(), at.Y()).Distance(gp_Pnt(sample.place));
  };
  gp_XY best = sample.parameters;
  double least = distanceAt(best);
  for (double step = 0.1; step > 1e-10; step /= 2) {
    const double stepU = step * std::min(highU - lowU, 100.0);
    const double stepV = step * std::min(highV - lowV, 100.0);
    for (bool isBetter = true; isBetter;) {
      isBetter = false;
      for (const gp_XY& way : {gp_XY(1, 0), gp_XY(-1, 0), gp_XY(0, 1), gp_XY(0, -1)}) {
        const gp_XY next(std::clamp(best.X() + way.X() * stepU, lowU, highU),
                         std::clamp(best.Y() + way.Y() * stepV, lowV, highV));
        if (const double distance = distanceAt(next); distance < least) {
          best = next;
          least = distance;
          isBetter = true;
        }
      }
    }
  }
  return least;
}

/// The largest distance of a face's samples from its surface if it is beyond the deflection, else 0.
double projectedDeviation(const TopoDS_Face& face, const std::vector<MeshPoint>& samples) {
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
  double largest = 0.0;
  for (const MeshPoint& sample : samples) {
    const gp_Pnt point(sample.place);
    double distance = point.Distance(surface->Value(sample.parameters.X(), sample.parameters.Y()));
    // The nearest point is not farther away than that.
    if (distance <= kDeflection) {
      continue;
    }
    const GeomAPI_ProjectPointOnSurf projection(point, surface);
    if (projection.NbPoints() > 0) {
      distance = std::min(distance, projection.LowerDistance());
    }
    if (distance > kDeflection) {
      distance = std::min(distance, searchedDistance(*surface, sample));
    }
    if (distance > kDeflection) {
      largest = std::max(largest, distance);
    }
  }
  return largest;
}

/// The exact geometry of a file, once it is prepared and meshed; none if it has none.
TopoDS_Compound meshedShapesOf(const std::string& path) {
  const TempDir dir;
  const ScopedTmpdir tmpdir(dir.path());
  const CapturedCout said;
  silenceKernel();
  Shapes shapes;
  if (prepareQuietly(path, dir / "ready.stp") == 0) {
    (void)readBrepShapes(dir / "ready.stp", shapes);
  }
  TopoDS_Compound compound = makeCompound(shapes);
  (void)meshShape(compound, kDeflection);
  return compound;
}

TEST_F(Corpus, DeviationsAreThoseOfTheProjection) {
  std::size_t beyond = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.at("file"));
    const TopoDS_Compound shape = meshedShapesOf(folder + "/" + row.at("file"));
    std::set<const TopoDS_TShape*> known;
    for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next()) {
      const TopoDS_Face& face = TopoDS::Face(explorer.Current());
      const std::vector<MeshPoint> samples = samplesOf(face);
      if (samples.empty() || !known.insert(face.TShape().get()).second) {
        continue;
      }
      const double expected = projectedDeviation(face, samples);
      const double deviation = deviationOf(face, kDeflection);
      if (expected > kDeflection) {
        ++beyond;
        EXPECT_NEAR(deviation, expected, 1e-6) << "face " << known.size();
      } else {
        EXPECT_LE(deviation, kDeflection) << "face " << known.size();
      }
    }
  }
  std::cout << beyond << " faces are beyond the deflection" << std::endl;
}

}  // namespace
}  // namespace plenvorith::test
