#include "samples/generator/strips.h"

#include <map>
#include <set>
#include <utility>

namespace plenvorith::samples {
namespace {

/// The triangles that are in no strip or fan yet, by their edges.
struct Rest {
  const Facets& facets;
  std::map<std::pair<std::size_t, std::size_t>, std::size_t> triangleAt{};
  std::set<std::size_t> left{};
};

/// A strip or a fan, and the triangles that it holds.
struct Run {
  Indices corners;
  std::set<std::size_t> triangles;
};

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// The corner across the edge from `from` to `to`, if its triangle is left.
std::size_t cornerAcross(const Rest& rest, Run& run, std::size_t from, std::size_t to) {
  const auto found = rest.triangleAt.find({from, to});
  if (found == rest.triangleAt.end() || rest.left.count(found->second) == 0 ||
      !run.triangles.insert(found->second).second) {
    return kNone;
  }
  for (const std::size_t corner : rest.facets.triangles[found->second]) {
    if (corner != from && corner != to) {
      return corner;
    }
  }
  return kNone;
}

/// A strip that begins with a triangle at one of its corners, or a fan about that corner.
Run runFrom(const Rest& rest, std::size_t triangle, std::size_t first, bool isFan) {
  const auto& corners = rest.facets.triangles[triangle];
  Run run{{corners[first], corners[(first + 1) % 3], corners[(first + 2) % 3]}, {triangle}};
  for (;;) {
    const std::size_t last = run.corners.back();
    const std::size_t before = isFan ? run.corners.front() : run.corners[run.corners.size() - 2];
    // Every other triangle of a strip runs the other way round.
    const bool isTurned = isFan || run.corners.size() % 2 == 0;
    const std::size_t next =
        isTurned ? cornerAcross(rest, run, before, last) : cornerAcross(rest, run, last, before);
    if (next == kNone) {
      return run;
    }
    run.corners.push_back(next);
  }
}

}  // namespace

StripsAndFans stripsAndFansOf(const Facets& facets) {
  Rest rest{facets};
  for (std::size_t i = 0; i < facets.triangles.size(); ++i) {
    rest.left.insert(i);
    for (std::size_t j = 0; j < 3; ++j) {
      const auto& corners = facets.triangles[i];
      rest.triangleAt[{corners.at(j), corners.at((j + 1) % 3)}] = i;
    }
  }
  StripsAndFans result;
  while (!rest.left.empty()) {
    Run longest;
    bool longestIsFan = false;
    for (const std::size_t triangle : rest.left) {
      for (std::size_t i = 0; i < 6; ++i) {
        const bool isFan = i >= 3;
        Run run = runFrom(rest, triangle, i % 3, isFan);
        if (run.triangles.size() > longest.triangles.size()) {
          longest = std::move(run);
          longestIsFan = isFan;
        }
      }
    }
    (longestIsFan ? result.fans : result.strips).push_back(longest.corners);
    for (const std::size_t triangle : longest.triangles) {
      rest.left.erase(triangle);
    }
  }
  return result;
}

}  // namespace plenvorith::samples
