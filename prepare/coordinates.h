#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "exchange/statement_reader.h"
#include "exchange/token_reader.h"
#include "prepare/output_file.h"
#include "product/placement.h"

namespace plenvorith {

/// Goes to the points of the COORDINATES_LIST at whose start the reader stands; false if there is no
/// such place.
[[nodiscard]] bool goToPoints(TokenReader& tokens, bool isComplex);

/// A point or a direction, "(x,y,z)".
struct ListedPoint {
  std::array<double, 3> numbers = {};  ///< 0 for what is next to nothing, or too much
  bool isPlain = true;                 ///< the numbers are what the text says
  bool isHuge = false;                 ///< one is more than a double holds
};

/// Reads a point at `p`. Gives the place behind it, or null where something else stands.
[[nodiscard]] const char* readPoint(const char* p, const char* end, ListedPoint& point);

/// Reads the point at the reader's place; false where something else stands. One of more than a
/// million digits counts as one that is more than a double holds, so that memory has a bound.
[[nodiscard]] bool takePoint(TokenReader& tokens, ListedPoint& point);

/// How a COORDINATES_LIST is written.
struct ListTarget {
  std::uint64_t name = 0;                ///< of the new list
  std::uint64_t pointCount = 0;          ///< how many points the list has
  bool isComplex = false;                ///< the instance that is read
  const Placement* placement = nullptr;  ///< of the points; null to write every number as it is
};

/// Writes the COORDINATES_LIST of ISO 10303-42 that a reader stands at, with each point placed. What
/// is next to nothing becomes 0. A point that overflows keeps its place in the list as one of zeros;
/// its place, from 0, is marked in `huge`, which is empty if there are none.
///
/// Errors  false if something other than points of three numbers stands in the list, or there are
///         more or fewer of them.
/// Memory  none, whatever the length of the list, but for a bit a point where one overflows.
[[nodiscard]] bool writeCoordinates(StatementReader& reader, const ListTarget& target,
                                    OutputFile& output, std::vector<bool>& huge);

}  // namespace plenvorith
