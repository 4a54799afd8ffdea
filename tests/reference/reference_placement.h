#pragma once

#include <array>
#include <string>

#include "common/triangle.h"
#include "tests/reference/reference_instances.h"

namespace plenvorith::test {

/// Takes a point to `origin` + x `axes[0]` + y `axes[1]` + z `axes[2]`; in millimetres.
struct Placement {
  std::array<Point3, 3> axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  Point3 origin;
};

Point3 placed(const Placement& placement, const Point3& point);
Placement product(const Placement& outer, const Placement& inner);
Placement inverse(const Placement& placement);
bool isIdentity(const Placement& placement);

/// Whether it turns what is right-handed into what is left-handed.
bool isMirrored(const Placement& placement);

/// Of the length unit of a context, by its SI prefix or by its chain of conversions; 1 where there
/// is none.
double millimetresPerUnit(const ExchangeInstances& instances, const std::string& context);

/// An axis2_placement_3d (`build_axes` of ISO 10303-42) or a cartesian_transformation_operator_3d
/// (`base_axis`), whose location is in units of `scale` millimetres. Anything else is the identity.
Placement placementOf(const ExchangeInstances& instances, const std::string& name, double scale);

}  // namespace plenvorith::test
