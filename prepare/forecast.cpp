#include "prepare/forecast.h"

#include <algorithm>
#include <set>

#include "exchange/instance_table.h"
#include "exchange/statement_reader.h"
#include "prepare/expand_face.h"
#include "prepare/findings.h"

namespace plenvorith {
namespace {

/// Looks at the faces that would be written; false if one of them cannot be read.
bool lookAtFaces(const InstanceTable& table, const TessellationPlan& plan, StatementReader& again,
                 Forecast& forecast) {
  for (const PlannedFace& planned : plan.faces) {
    if (planned.solid == PlannedFace::kNoSolid) {
      continue;
    }
    again.seekBody(table.offset(planned.face));
    const std::uint64_t points = table.pointCount(plan.lists[planned.list].list);
    const ExpandedFace face = expandFace(again, table.type(planned.face), points, {}, nullptr);
    if (face.hasFailed) {
      return false;
    }
    forecast.triangles += face.triangles + face.equal;
    forecast.hasStrips = forecast.hasStrips || face.hasStrips;
    forecast.hasFans = forecast.hasFans || face.hasFans;
    forecast.isMapped = forecast.isMapped || face.isMapped;
  }
  return true;
}

/// Whether a placement does more than to make millimetres of a unit.
bool moves(const Placement& placement, const std::set<double>& units) {
  return std::none_of(units.begin(), units.end(), [&placement](double unit) {
    return isIdentity(scaled(placement, 1 / unit));
  });
}

}  // namespace

std::optional<Forecast> forecastPreparation(const std::string& inputPath) {
  StatementReader reader(inputPath);
  StatementReader again(inputPath);
  InstanceTable table;
  if (!reader.isOpen() || !again.isOpen() || !table.read(reader)) {
    return std::nullopt;
  }
  const Findings findings = decide(table, again);
  const TessellationPlan& plan = findings.decisions.plan;
  Forecast forecast;
  forecast.hasExact = findings.part.hasExact;
  forecast.hasAnnotation = findings.part.annotationCount + findings.part.propertyCount > 0;
  forecast.hasOrphans = !findings.decisions.orphans.representations.empty();
  for (const double unit : plan.units) {
    forecast.isScaled = forecast.isScaled || unit != 1.0;
  }
  for (const PlannedPlacement& planned : plan.placements) {
    forecast.isPlaced = forecast.isPlaced || moves(planned.placement, plan.units);
  }
  if (plan.hasTooMany || !lookAtFaces(table, plan, again, forecast)) {
    return std::nullopt;
  }
  return forecast;
}

}  // namespace plenvorith
