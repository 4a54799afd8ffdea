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

/// A face of a body and where it names its coordinates.
struct LinkedFace {
  InstanceIndex face = kNoInstance;
  FaceLinks links;
};

class Planner {
 public:
  Planner(const InstanceTable& table, const PartTessellation& part, Occurrences& occurrences,
          Warnings& warnings)
      : table_(table),
        part_(part),
        occurrences_(occurrences),
        warnings_(warnings),
        numbers_(plan_.placements) {}

  TessellationPlan plan() {
    plan_.hasTooMany = part_.hasTooMany || !placeBodies();
    if (!plan_.hasTooMany) {
      for (const Body& body : part_.bodies) {
        planBody(body);
      }
      numberLists();
      addCopies();
    }
    return std::move(plan_);
  }

 private:
  /// The faces of a body that have coordinates; of the bodies, those of one instance follow one
  /// another.
  const std::vector<LinkedFace>& linkedFacesOf(InstanceIndex body) {
    if (body == known_) {
      return faces_;
    }
    known_ = body;
    faces_.clear();
    for (const InstanceIndex face : facesOf(table_, body, warnings_)) {
      const FaceLinks links = readFaceLinks(table_, face);
      if (links.coordinates == kNoInstance) {
        warnings_.insert("a face without coordinates is left out");
      } else {
        faces_.push_back({face, links});
      }
    }
    return faces_;
  }

  /// Finds where the bodies stand. False, before memory is spent on it, if there are more faces in
  /// all places than can be.
  bool placeBodies() {
    constexpr std::size_t kMaxFaces = std::size_t{1} << 24U;
    std::vector<Node> nodes;
    std::size_t count = 0;
    for (const Body& body : part_.bodies) {
      const std::size_t faces = linkedFacesOf(body.instance).size();
      if (faces > 0) {
        nodes.push_back(body.node);
        count += faces * occurrences_.countOf(body.node);
      }
      if (count > kMaxFaces) {
        return false;
      }
    }
    return occurrences_.place(nodes);
  }

  void planBody(const Body& body) {
    const std::vector<LinkedFace>& faces = linkedFacesOf(body.instance);
    if (faces.empty()) {
      return;
    }
    const double unit = occurrences_.unitOf(body.representation);
    plan_.bodyCount += body.instance != previous_ ? 1 : 0;
    previous_ = body.instance;
    plan_.units.insert(unit);
    plan_.firstSolids.push_back(plan_.solidCount);
    Placement own;
    for (const InstanceIndex location : body.repositioning) {
      own = own * occurrences_.placementOf(location, body.representation);
    }
    for (const Placement& place : occurrences_.placementsOf(body.node)) {
      planSolid(body, faces, place * own, unit);
    }
  }

  /// Plans the body in one place.
  void planSolid(const Body& body, const std::vector<LinkedFace>& faces, const Placement& inWhole,
                 double unit) {
    const std::uint32_t common = numbers_.numberOf(scaled(inWhole, unit));
    for (const LinkedFace& face : faces) {
      std::uint32_t placement = common;
      if (face.links.location != kNoInstance) {
        const Placement own = occurrences_.placementOf(face.links.location, body.representation);
        placement = numbers_.numberOf(scaled(inWhole * own, unit));
      }
      plan_.faces.push_back({face.face, plan_.solidCount, 0});
      lists_.push_back({face.links.coordinates, placement});
    }
    ++plan_.solidCount;
  }

  /// Puts the lists in order and tells the faces, which are in the order of `lists_`, their places.
  void numberLists() {
    plan_.lists = lists_;
    std::sort(plan_.lists.begin(), plan_.lists.end());
    plan_.lists.erase(std::unique(plan_.lists.begin(), plan_.lists.end()), plan_.lists.end());
    for (std::size_t i = 0; i < lists_.size(); ++i) {
      const auto place = std::lower_bound(plan_.lists.begin(), plan_.lists.end(), lists_[i]);
      plan_.faces[i].list = static_cast<std::uint32_t>(place - plan_.lists.begin());
    }
  }

  /// Adds the faces of copies, whose triangles are counted.
  void addCopies() {
    Warnings ignored;
    for (const InstanceIndex body : part_.copies) {
      for (const InstanceIndex face : facesOf(table_, body, ignored)) {
        plan_.faces.push_back({face, PlannedFace::kNoSolid, 0});
      }
    }
    std::sort(plan_.faces.begin(), plan_.faces.end());
  }

  const InstanceTable& table_;
  const PartTessellation& part_;
  Occurrences& occurrences_;
  Warnings& warnings_;
  TessellationPlan plan_;
  PlacementNumbers numbers_;
  std::vector<PlannedList> lists_;  // of the faces
  std::vector<LinkedFace> faces_;   // of the body `known_`
  InstanceIndex known_ = kNoInstance;
  InstanceIndex previous_ = kNoInstance;
};

}  // namespace

TessellationPlan planTessellation(const InstanceTable& table, const PartTessellation& part,
                                  Occurrences& occurrences, Warnings& warnings) {
  return Planner(table, part, occurrences, warnings).plan();
}

}  // namespace plenvorith
