#include "prepare/tessellation_plan.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace plenvorith {
namespace {

/// Gives equal placements one number.
class PlacementNumbers {
 public:
  explicit PlacementNumbers(std::vector<PlannedPlacement>& placements) : placements_(placements) {}

  std::uint32_t numberOf(const Placement& placement) {
    const auto [entry, isNew] =
        numbers_.emplace(placement.m, static_cast<std::uint32_t>(placements_.size()));
    if (isNew) {
      placements_.push_back({placement, isIdentity(placement), isMirrored(placement)});
    }
    return entry->second;
  }

 private:
  std::vector<PlannedPlacement>& placements_;
  std::map<std::array<std::array<double, 4>, 3>, std::uint32_t> numbers_;
};

/// A face to be written, with its list by instance and placement.
struct Wanted {
  InstanceIndex face = kNoInstance;
  std::uint32_t solid = 0;
  PlannedList list;
};

/// A face of a body and where it names its coordinates.
struct LinkedFace {
  InstanceIndex face = kNoInstance;
  FaceLinks links;
};

std::vector<LinkedFace> linkedFacesOf(const InstanceTable& table, InstanceIndex body,
                                      Warnings& warnings) {
  std::vector<LinkedFace> faces;
  for (const InstanceIndex face : facesOf(table, body, warnings)) {
    const FaceLinks links = readFaceLinks(table, face);
    if (links.coordinates == kNoInstance) {
      warnings.insert("a face without coordinates is left out");
    } else {
      faces.push_back({face, links});
    }
  }
  return faces;
}

}  // namespace

TessellationPlan planTessellation(const InstanceTable& table, const PartTessellation& part,
                                  Occurrences& occurrences, Warnings& warnings) {
  TessellationPlan plan;
  PlacementNumbers numbers(plan.placements);
  std::vector<Wanted> wanted;
  InstanceIndex previous = kNoInstance;
  for (const Body& body : part.bodies) {
    const std::vector<LinkedFace> faces = linkedFacesOf(table, body.instance, warnings);
    if (faces.empty()) {
      continue;
    }
    const double unit = occurrences.unitOf(body.representation);
    const std::vector<Placement>& places = occurrences.placementsOf(body.node);
    plan.hasTooMany = plan.hasTooMany || places.empty();
    plan.bodyCount += body.instance != previous ? 1 : 0;
    previous = body.instance;
    plan.units.insert(unit);
    plan.firstSolids.push_back(plan.solidCount);
    Placement own;
    for (const InstanceIndex location : body.repositioning) {
      own = own * occurrences.placementOf(location, body.representation);
    }
    for (const Placement& place : places) {
      const std::uint32_t solid = plan.solidCount++;
      const Placement inWhole = place * own;
      const std::uint32_t common = numbers.numberOf(scaled(inWhole, unit));
      for (const LinkedFace& face : faces) {
        const std::uint32_t placement =
            face.links.location == kNoInstance
                ? common
                : numbers.numberOf(scaled(
                      inWhole * occurrences.placementOf(face.links.location, body.representation),
                      unit));
        wanted.push_back({face.face, solid, {face.links.coordinates, placement}});
      }
    }
  }
  for (const Wanted& face : wanted) {
    plan.lists.push_back(face.list);
  }
  std::sort(plan.lists.begin(), plan.lists.end());
  plan.lists.erase(std::unique(plan.lists.begin(), plan.lists.end()), plan.lists.end());
  plan.faces.reserve(wanted.size());
  for (const Wanted& face : wanted) {
    const auto list = std::lower_bound(plan.lists.begin(), plan.lists.end(), face.list);
    plan.faces.push_back(
        {face.face, face.solid, static_cast<std::uint32_t>(list - plan.lists.begin())});
  }
  for (const InstanceIndex body : part.copies) {
    Warnings ignored;
    for (const InstanceIndex face : facesOf(table, body, ignored)) {
      plan.faces.push_back({face, PlannedFace::kNoSolid, 0});
    }
  }
  std::sort(plan.faces.begin(), plan.faces.end());
  return plan;
}

}  // namespace plenvorith
