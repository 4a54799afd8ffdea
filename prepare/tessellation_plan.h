#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "prepare/part_tessellation.h"
#include "product/occurrences.h"
#include "product/placement.h"

namespace plenvorith {

/// How the coordinates of a list become millimetres in the whole.
struct PlannedPlacement {
  Placement placement;
  bool isIdentity = true;   ///< the numbers stay as they are
  bool isMirrored = false;  ///< two corners of each triangle change places
};

/// A coordinates list in one placement.
struct PlannedList {
  InstanceIndex list = kNoInstance;
  std::uint32_t placement = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): what the check takes for a pointer is generated
  auto operator<=>(const PlannedList&) const = default;
};

/// A face in one solid. `solid` is `kNoSolid` where its triangles are counted only.
struct PlannedFace {
  static constexpr std::uint32_t kNoSolid = 0xFFFFFFFF;

  InstanceIndex face = kNoInstance;
  std::uint32_t solid = 0;
  std::uint32_t list = 0;  ///< a place in `TessellationPlan::lists`

  // NOLINTNEXTLINE(modernize-use-nullptr): as above
  auto operator<=>(const PlannedFace&) const = default;
};

/// What of the tessellation is written: everything of one kind in the order of the file.
struct TessellationPlan {
  std::vector<PlannedPlacement> placements;
  std::vector<PlannedList> lists;
  std::vector<PlannedFace> faces;
  std::uint32_t solidCount = 0;
  std::vector<std::uint32_t> firstSolids;  ///< of each body the first solid, ascending
  std::uint64_t bodyCount = 0;             ///< of the file, however often each stands
  std::set<double> units;                  ///< the millimetres in one unit, of the bodies
  bool hasTooMany = false;                 ///< there are more placements than can be kept
};

[[nodiscard]] TessellationPlan planTessellation(const InstanceTable& table,
                                                const PartTessellation& part,
                                                Occurrences& occurrences, Warnings& warnings);

}  // namespace plenvorith
