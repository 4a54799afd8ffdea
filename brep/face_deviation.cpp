#include "brep/face_deviation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include <BRep_Tool.hxx>
#include <Extrema_ExtPS.hxx>
#include <GeomAdaptor_Surface.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>
#include <gp_XY.hxx>

namespace plenvorith {
namespace {

/// A point of the mesh, with the parameters that it should have on the surface.
struct Sample {
  gp_XYZ point;
  gp_XY parameters;
  double distance = 0.0;  ///< from the surface, as far as known: it may be nearer
};

/// A rectangle of parameters.
struct Domain {
  gp_XY low;
  gp_XY high;
};

/// A face's surface and mesh in one frame.
struct MeshedFace {
  GeomAdaptor_Surface surface;
  Handle(Poly_Triangulation) mesh;
  gp_Trsf toSurface;  ///< from the frame of the mesh
  bool isMoved = false;
};

MeshedFace meshedFaceOf(const TopoDS_Face& face) {
  MeshedFace meshed;
  TopLoc_Location ofMesh;
  meshed.mesh = BRep_Tool::Triangulation(face, ofMesh);
  TopLoc_Location ofSurface;
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, ofSurface);
  if (!surface.IsNull()) {
    meshed.surface.Load(surface);
  }
  const TopLoc_Location between = ofSurface.Inverted() * ofMesh;
  meshed.isMoved = !between.IsIdentity();
  meshed.toSurface = between.Transformation();
  return meshed;
}

gp_XYZ nodeOf(const MeshedFace& face, int index) {
  gp_XYZ point = face.mesh->Node(index).XYZ();
  if (face.isMoved) {
    face.toSurface.Transforms(point);
  }
  return point;
}

double squareDistanceAt(const GeomAdaptor_Surface& surface, const gp_XYZ& point,
                        const gp_XY& parameters) {
  gp_Pnt onSurface;
  surface.D0(parameters.X(), parameters.Y(), onSurface);
  return (onSurface.XYZ() - point).SquareModulus();
}

Domain domainOf(const GeomAdaptor_Surface& surface) {
  // A closed surface goes on behind its seam.
  const bool isEndlessInU = surface.IsUPeriodic();
  const bool isEndlessInV = surface.IsVPeriodic();
  const double far = Precision::Infinite();
  return {{isEndlessInU ? -far : surface.FirstUParameter(),
           isEndlessInV ? -far : surface.FirstVParameter()},
          {isEndlessInU ? far : surface.LastUParameter(),
           isEndlessInV ? far : surface.LastVParameter()}};
}

gp_XY clamped(const gp_XY& parameters, const Domain& domain) {
  return {std::clamp(parameters.X(), domain.low.X(), domain.high.X()),
          std::clamp(parameters.Y(), domain.low.Y(), domain.high.Y())};
}

/// The step of Newton's method towards the nearest point; zero where there is none.
gp_XY stepTowards(const GeomAdaptor_Surface& surface, const gp_XYZ& point,
                  const gp_XY& parameters) {
  gp_Pnt at;
  gp_Vec du;
  gp_Vec dv;
  gp_Vec duu;
  gp_Vec dvv;
  gp_Vec duv;
  surface.D2(parameters.X(), parameters.Y(), at, du, dv, duu, dvv, duv);
  const gp_Vec rest(point - at.XYZ());
  const double gradientU = rest.Dot(du);
  const double gradientV = rest.Dot(dv);
  // Without the second derivatives where with them the step would lead away.
  for (const double weight : {1.0, 0.0}) {
    const double uu = du.SquareMagnitude() - weight * rest.Dot(duu);
    const double vv = dv.SquareMagnitude() - weight * rest.Dot(dvv);
    const double uv = du.Dot(dv) - weight * rest.Dot(duv);
    const double determinant = uu * vv - uv * uv;
    if (uu > 0 && determinant > 1e-12 * uu * std::abs(vv)) {
      return {(gradientU * vv - gradientV * uv) / determinant,
              (gradientV * uu - gradientU * uv) / determinant};
    }
  }
  return {0, 0};
}

/// The distance to the nearest point that Newton's method finds from the sample's parameters on.
double refinedDistance(const GeomAdaptor_Surface& surface, const Domain& domain,
                       const Sample& sample) {
  constexpr int kSteps = 12;
  double nearest = sample.distance * sample.distance;
  gp_XY parameters = clamped(sample.parameters, domain);
  for (int i = 0; i < kSteps; ++i) {
    const gp_XY step = stepTowards(surface, sample.point, parameters);
    parameters = clamped(parameters + step, domain);
    const double distance = squareDistanceAt(surface, sample.point, parameters);
    const bool hasArrived = !(distance < nearest * (1 - 1e-12));
    nearest = std::min(nearest, distance);
    if (hasArrived && i > 0) {
      break;
    }
  }
  return std::sqrt(nearest);
}

/// The rectangle in which the kernel looks: all of the surface, and of an endless one what the mesh
/// covers and a tenth more on each side.
Domain searchedOf(const MeshedFace& face) {
  Domain covered{face.mesh->UVNode(1).XY(), face.mesh->UVNode(1).XY()};
  for (int i = 2; i <= face.mesh->NbNodes(); ++i) {
    const gp_XY node = face.mesh->UVNode(i).XY();
    covered.low = {std::min(covered.low.X(), node.X()), std::min(covered.low.Y(), node.Y())};
    covered.high = {std::max(covered.high.X(), node.X()), std::max(covered.high.Y(), node.Y())};
  }
  const gp_XY margin = (covered.high - covered.low) * 0.1;
  const auto finite = [](double bound, double otherwise) {
    return Precision::IsInfinite(bound) ? otherwise : bound;
  };
  const GeomAdaptor_Surface& surface = face.surface;
  return {{finite(surface.FirstUParameter(), covered.low.X() - margin.X()),
           finite(surface.FirstVParameter(), covered.low.Y() - margin.Y())},
          {finite(surface.LastUParameter(), covered.high.X() + margin.X()),
           finite(surface.LastVParameter(), covered.high.Y() + margin.Y())}};
}

/// The largest distance of samples that are too far away by Newton's method, as the kernel's
/// projection confirms it.
double confirmedDistance(const MeshedFace& face, std::vector<Sample>& samples) {
  std::sort(samples.begin(), samples.end(),
            [](const Sample& a, const Sample& b) { return a.distance > b.distance; });
  const Domain searched = searchedOf(face);
  Extrema_ExtPS projection;
  projection.Initialize(face.surface, searched.low.X(), searched.high.X(), searched.low.Y(),
                        searched.high.Y(), Precision::PConfusion(), Precision::PConfusion());
  double largest = 0.0;
  for (const Sample& sample : samples) {
    // What comes now is nearer already.
    if (sample.distance <= largest) {
      break;
    }
    double distance = sample.distance;
    projection.Perform(gp_Pnt(sample.point));
    if (projection.IsDone()) {
      for (int i = 1; i <= projection.NbExt(); ++i) {
        distance = std::min(distance, std::sqrt(projection.SquareDistance(i)));
      }
    }
    largest = std::max(largest, distance);
  }
  return largest;
}

/// Calls `visit` with the centre and the middles of the sides of each triangle.
template <typename Visit>
void forEachSample(const MeshedFace& face, Visit visit) {
  const Poly_Triangulation& mesh = *face.mesh;
  for (int i = 1; i <= mesh.NbTriangles(); ++i) {
    std::array<int, 3> corners{};
    mesh.Triangle(i).Get(corners[0], corners[1], corners[2]);
    std::array<gp_XYZ, 3> points;
    std::array<gp_XY, 3> parameters;
    for (std::size_t k = 0; k < 3; ++k) {
      points[k] = nodeOf(face, corners[k]);
      parameters[k] = mesh.UVNode(corners[k]).XY();
    }
    visit((points[0] + points[1] + points[2]) / 3,
          (parameters[0] + parameters[1] + parameters[2]) / 3);
    for (std::size_t k = 0; k < 3; ++k) {
      const std::size_t next = k == 2 ? 0 : k + 1;
      visit((points[k] + points[next]) / 2, (parameters[k] + parameters[next]) / 2);
    }
  }
}

bool hasMesh(const TopoDS_Face& face) {
  TopLoc_Location ignored;
  const Handle(Poly_Triangulation)& mesh = BRep_Tool::Triangulation(face, ignored);
  return !mesh.IsNull() && mesh->NbTriangles() > 0;
}

}  // namespace

double deviationOf(const TopoDS_Face& face, double limit) {
  const MeshedFace meshed = meshedFaceOf(face);
  double within = 0.0;  // squared
  std::vector<Sample> beyond;
  forEachSample(meshed, [&](const gp_XYZ& point, const gp_XY& parameters) {
    const double distance = squareDistanceAt(meshed.surface, point, parameters);
    if (distance > limit * limit) {
      beyond.push_back({point, parameters, std::sqrt(distance)});
    } else {
      within = std::max(within, distance);
    }
  });
  double largest = std::sqrt(within);
  const Domain domain = domainOf(meshed.surface);
  std::vector<Sample> unconfirmed;
  for (Sample& sample : beyond) {
    sample.distance = refinedDistance(meshed.surface, domain, sample);
    if (sample.distance > limit) {
      unconfirmed.push_back(sample);
    } else {
      largest = std::max(largest, sample.distance);
    }
  }
  return unconfirmed.empty() ? largest : std::max(largest, confirmedDistance(meshed, unconfirmed));
}

std::vector<FaceFacts> measureFaces(const Shapes& shapes, double deflection) {
  std::map<const TopoDS_TShape*, double> deviations;
  std::vector<FaceFacts> facts;
  facts.reserve(shapes.size());
  for (const TopoDS_Shape& shape : shapes) {
    FaceFacts& part = facts.emplace_back();
    for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next()) {
      const TopoDS_Face& face = TopoDS::Face(explorer.Current());
      ++part.faces;
      if (!hasMesh(face)) {
        ++part.withoutMesh;
        continue;
      }
      TopLoc_Location ignored;
      part.triangles +=
          static_cast<std::uint64_t>(BRep_Tool::Triangulation(face, ignored)->NbTriangles());
      const auto [entry, isNew] = deviations.try_emplace(face.TShape().get(), 0.0);
      if (isNew) {
        entry->second = deviationOf(face, deflection);
      }
      part.overDeflection += entry->second > deflection ? 1 : 0;
      part.deviation = std::max(part.deviation, entry->second);
    }
  }
  return facts;
}

}  // namespace plenvorith
