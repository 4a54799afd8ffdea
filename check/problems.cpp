#include "check/problems.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace plenvorith {
namespace {

std::optional<double> relativeDifference(const std::optional<double>& value,
                                         const std::optional<double>& other) {
  if (!value || !other) {
    return std::nullopt;
  }
  return *value == *other ? 0.0 : (*value - *other) / std::abs(*other);
}

double distance(const Point3& a, const Point3& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

/// More than a tenth of a percent; what is no number, too.
bool isOff(const std::optional<double>& difference, double whole = 1.0) {
  constexpr double kTolerated = 1e-3;
  return difference && !(std::abs(*difference) <= kTolerated * whole);
}

bool isSolid(const CheckedPart& part) {
  return std::string_view(part.part.kind) == "solid";
}

/// Whether stated measures do not fit to measures of something of this size.
bool areOff(const PartMeasures& measures, const PartMeasures& stated, double size) {
  const MeasureDifferences differences = differencesOf(measures, stated);
  return isOff(differences.volume) || isOff(differences.area) || isOff(differences.centroid, size);
}

double sizeOf(const MeshFacts& mesh) {
  return distance(mesh.measure.low, mesh.measure.high);
}

void add(std::optional<double>& sum, const std::optional<double>& value) {
  sum = sum && value ? std::optional(*sum + *value) : std::nullopt;
}

}  // namespace

bool isClosed(const MeshFacts& mesh) {
  return mesh.measure.triangles > 0 && mesh.openEdges == 0;
}

MeasureDifferences differencesOf(const PartMeasures& measures, const PartMeasures& others) {
  MeasureDifferences differences{relativeDifference(measures.volume, others.volume),
                                 relativeDifference(measures.area, others.area), std::nullopt};
  if (measures.centroid && others.centroid) {
    differences.centroid = distance(*measures.centroid, *others.centroid);
  }
  return differences;
}

PartMeasures measuresOf(const MeshFacts& mesh) {
  return {volumeOf(mesh.measure), mesh.measure.area, centroidOf(mesh.measure)};
}

PartMeasures bestMeasures(const CheckedPart& part) {
  return part.part.exact.area ? part.part.exact : measuresOf(part.mesh);
}

PartMeasures bestMeasures(const CheckedModel& model) {
  const bool hasSolids = std::any_of(model.parts.begin(), model.parts.end(), isSolid);
  PartMeasures sum{0.0, 0.0, std::nullopt};
  std::optional<Point3> moment = Point3{};
  for (const CheckedPart& part : model.parts) {
    if (hasSolids && !isSolid(part)) {
      continue;
    }
    const PartMeasures measures = bestMeasures(part);
    add(sum.volume, measures.volume);
    add(sum.area, measures.area);
    if (moment && measures.volume && measures.centroid) {
      moment->x += *measures.volume * measures.centroid->x;
      moment->y += *measures.volume * measures.centroid->y;
      moment->z += *measures.volume * measures.centroid->z;
    } else {
      moment.reset();
    }
  }
  if (moment && sum.volume && *sum.volume != 0.0) {
    sum.centroid =
        Point3{moment->x / *sum.volume, moment->y / *sum.volume, moment->z / *sum.volume};
  }
  return sum;
}

bool hasProblem(const CheckedPart& part) {
  const FaceFacts& faces = part.part.faces;
  const bool isSound = !isSolid(part) || (isClosed(part.mesh) && volumeOf(part.mesh.measure) > 0);
  const bool isStatedOtherwise =
      part.part.exact.area && areOff(part.part.exact, part.part.stated, sizeOf(part.mesh));
  return !isSound || faces.withoutMesh > 0 || faces.overDeflection > 0 || isStatedOtherwise;
}

ModelTotals totalsOf(const CheckedModel& model) {
  ModelTotals totals;
  for (const CheckedPart& part : model.parts) {
    const FaceFacts& faces = part.part.faces;
    ++totals.parts;
    totals.partsWithProblems += hasProblem(part) ? 1U : 0U;
    totals.openSolids += isSolid(part) && !isClosed(part.mesh) ? 1U : 0U;
    totals.facesWithoutMesh += faces.withoutMesh;
    totals.facesOverDeflection += faces.overDeflection;
    totals.deviation = std::max(totals.deviation, faces.deviation);
    totals.triangles += part.mesh.measure.triangles;
    totals.volume += isClosed(part.mesh) ? volumeOf(part.mesh.measure) : 0.0;
  }
  return totals;
}

bool hasProblemOfTheWhole(const CheckedModel& model) {
  if (!model.withExact || model.parts.empty()) {
    return false;
  }
  Point3 low = model.parts.front().mesh.measure.low;
  Point3 high = model.parts.front().mesh.measure.high;
  for (const CheckedPart& part : model.parts) {
    const MeshMeasure& measure = part.mesh.measure;
    low = {std::min(low.x, measure.low.x), std::min(low.y, measure.low.y),
           std::min(low.z, measure.low.z)};
    high = {std::max(high.x, measure.high.x), std::max(high.y, measure.high.y),
            std::max(high.z, measure.high.z)};
  }
  return areOff(bestMeasures(model), model.stated, distance(low, high));
}

}  // namespace plenvorith
