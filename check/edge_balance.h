#pragma once

#include <cstdint>
#include <span>

#include "check/places.h"

namespace plenvorith {

/// The number of sides of triangles that no side in the opposite direction is the twin of.
///
/// A mesh is closed when there are none: each side from one place to another is there as often as
/// the one back. So two bodies that touch along an edge are closed, and two triangles of one body
/// that look in different directions are not.
///
/// Takes   triangles whose places have numbers below `places` (at most `kMaxPlaces`). A side from a
///         place to itself counts for nothing.
/// Cost    12 bytes a triangle and 8 a place.
std::uint64_t countOpenEdges(std::span<const Corners> triangles, std::uint32_t places);

/// The number of connected pieces: sets of triangles that share no place with any other triangle.
///
/// Cost  4 bytes a place.
std::uint64_t countPieces(std::span<const Corners> triangles, std::uint32_t places);

}  // namespace plenvorith
