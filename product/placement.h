#pragma once

#include <array>
#include <optional>
#include <set>
#include <string>

#include "exchange/instance_table.h"
#include "exchange/parameters.h"

namespace plenvorith {

/// An affine map of points: entry [i][j] of the linear part, and the translation in [i][3].
struct Placement {
  std::array<std::array<double, 4>, 3> m = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

  bool operator==(const Placement&) const = default;
};

/// First `inner`, then `outer`.
[[nodiscard]] Placement operator*(const Placement& outer, const Placement& inner);

/// What undoes a placement; nothing if it maps space to a plane, a line or a point.
[[nodiscard]] std::optional<Placement> inverse(const Placement& placement);

/// Whether all entries are those of the identity, within 1e-12.
[[nodiscard]] bool isIdentity(const Placement& placement);

/// Whether it turns a right hand into a left one.
[[nodiscard]] bool isMirrored(const Placement& placement);

/// Lengths are multiplied by `factor` first.
[[nodiscard]] Placement scaled(const Placement& placement, double factor);

/// Things about a file that the user is told, each once, in the order of their texts.
using Warnings = std::set<std::string>;

/// The placement that AXIS2_PLACEMENT_3D or CARTESIAN_TRANSFORMATION_OPERATOR_3D of ISO 10303-42
/// means, with its location multiplied by `unit`. Nothing if it is neither, or malformed.
[[nodiscard]] std::optional<Placement> readPlacement(InstanceReader& reader, InstanceIndex index,
                                                     double unit);

}  // namespace plenvorith
