#include "check/edge_balance.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace plenvorith {
namespace {

/// A side from the point of view of its lower place: the number of the higher one, and in the last
/// bit whether the side goes there.
using HalfEdge = std::uint32_t;

/// Calls `visit` with the lower place and the half edge of each side that has two places.
template <typename Visit>
void forEachSide(std::span<const Corners> triangles, Visit visit) {
  for (const Corners& corners : triangles) {
    for (std::size_t i = 0; i < 3; ++i) {
      const std::uint32_t from = corners[i];
      const std::uint32_t to = corners[i == 2 ? 0 : i + 1];
      if (from < to) {
        visit(from, to << 1U | 1U);
      } else if (to < from) {
        visit(to, from << 1U);
      }
    }
  }
}

/// The surplus of one direction over the other, over the sides of one lower place.
std::uint64_t surplusOf(std::span<HalfEdge> sides) {
  std::sort(sides.begin(), sides.end());
  std::uint64_t surplus = 0;
  for (std::size_t i = 0; i < sides.size();) {
    std::int64_t balance = 0;
    const HalfEdge higher = sides[i] >> 1U;
    for (; i < sides.size() && sides[i] >> 1U == higher; ++i) {
      balance += (sides[i] & 1U) != 0 ? 1 : -1;
    }
    surplus += static_cast<std::uint64_t>(balance < 0 ? -balance : balance);
  }
  return surplus;
}

std::uint32_t rootOf(std::vector<std::uint32_t>& parents, std::uint32_t place) {
  while (parents[place] != place) {
    parents[place] = parents[parents[place]];
    place = parents[place];
  }
  return place;
}

}  // namespace

std::uint64_t countOpenEdges(std::span<const Corners> triangles, std::uint32_t places) {
  // Sides are put next to those with the same lower place, in one go: then only a few have to be
  // sorted at a time.
  std::vector<std::size_t> ends(std::size_t{places} + 1);
  forEachSide(triangles, [&ends](std::uint32_t lower, HalfEdge) { ++ends[lower + 1]; });
  std::partial_sum(ends.begin(), ends.end(), ends.begin());
  std::vector<HalfEdge> sides(ends.back());
  // Each end begins as the start and moves up to the end.
  forEachSide(triangles, [&](std::uint32_t lower, HalfEdge side) { sides[ends[lower]++] = side; });
  std::uint64_t open = 0;
  std::size_t start = 0;
  for (std::uint32_t place = 0; place < places; ++place) {
    open += surplusOf(std::span(sides).subspan(start, ends[place] - start));
    start = ends[place];
  }
  return open;
}

std::uint64_t countPieces(std::span<const Corners> triangles, std::uint32_t places) {
  std::vector<std::uint32_t> parents(places);
  std::iota(parents.begin(), parents.end(), 0U);
  std::uint64_t pieces = places;
  for (const Corners& corners : triangles) {
    for (const std::uint32_t other : {corners[1], corners[2]}) {
      const std::uint32_t a = rootOf(parents, corners[0]);
      const std::uint32_t b = rootOf(parents, other);
      if (a != b) {
        parents[std::max(a, b)] = std::min(a, b);
        --pieces;
      }
    }
  }
  return pieces;
}

}  // namespace plenvorith
