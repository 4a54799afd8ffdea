#include "tests/reference/reference_placement.h"

#include <cmath>
#include <cstddef>
#include <map>

#include "tests/support/mesh_measures.h"

namespace plenvorith::test {
namespace {

Point3 sum(const Point3& a, const Point3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Point3 times(const Point3& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}

Point3 normalised(const Point3& a) {
  return times(a, 1 / length(a));
}

double determinant(const std::array<Point3, 3>& axes) {
  return dot(axes[0], cross(axes[1], axes[2]));
}

const ExchangeInstance* find(const ExchangeInstances& instances, const std::string& name) {
  const auto found = instances.find(name);
  return found == instances.end() ? nullptr : &found->second;
}

/// The numbers of a cartesian_point or a direction.
Point3 vectorOf(const ExchangeInstances& instances, const std::string& name) {
  Point3 vector;
  const ExchangeInstance* const instance = find(instances, name);
  if (instance != nullptr && !instance->isComplex) {
    const Parameters& numbers = instance->records.begin()->second.at(1).items;
    for (std::size_t i = 0; i < numbers.size() && i < 3; ++i) {
      (i == 0 ? vector.x : i == 1 ? vector.y : vector.z) = std::stod(numbers[i].text);
    }
  }
  return vector;
}

/// A direction, or `otherwise` where the parameter is no reference.
Point3 directionOf(const ExchangeInstances& instances, const Parameter& parameter,
                   const Point3& otherwise) {
  return parameter.kind == Parameter::Kind::Reference ? vectorOf(instances, parameter.text)
                                                      : otherwise;
}

/// `first_proj_axis`.
Point3 firstAxis(const ExchangeInstances& instances, const Point3& z, const Parameter& reference) {
  const bool alongX = std::abs(z.x) == 1 && z.y == 0 && z.z == 0;
  const Point3 v =
      normalised(directionOf(instances, reference, alongX ? Point3{0, 1, 0} : Point3{1, 0, 0}));
  return normalised(difference(v, times(z, dot(v, z))));
}

/// `second_proj_axis`.
Point3 secondAxis(const ExchangeInstances& instances, const Point3& z, const Point3& x,
                  const Parameter& reference) {
  const Point3 v = directionOf(instances, reference, {0, 1, 0});
  const Point3 inPlane = difference(v, times(z, dot(v, z)));
  return normalised(difference(inPlane, times(x, dot(inPlane, x))));
}

double siFactor(const std::string& prefix) {
  static const std::map<std::string, int> powers = {
      {".EXA.", 18},  {".PETA.", 15},  {".TERA.", 12},   {".GIGA.", 9},
      {".MEGA.", 6},  {".KILO.", 3},   {".HECTO.", 2},   {".DECA.", 1},
      {".DECI.", -1}, {".CENTI.", -2}, {".MILLI.", -3},  {".MICRO.", -6},
      {".NANO.", -9}, {".PICO.", -12}, {".FEMTO.", -15}, {".ATTO.", -18}};
  const auto found = powers.find(prefix);
  return std::pow(10.0, 3 + (found == powers.end() ? 0 : found->second));
}

/// In millimetres; 0 where it is no unit of length.
double lengthOfUnit(const ExchangeInstances& instances, const std::string& name) {
  const ExchangeInstance* const unit = find(instances, name);
  if (unit == nullptr || recordOf(*unit, "LENGTH_UNIT") == nullptr) {
    return 0;
  }
  if (const Parameters* const si = recordOf(*unit, "SI_UNIT")) {
    return siFactor(si->at(0).text);
  }
  if (const Parameters* const conversion = recordOf(*unit, "CONVERSION_BASED_UNIT")) {
    const ExchangeInstance* const measure = find(instances, conversion->at(1).text);
    for (const char* type : {"LENGTH_MEASURE_WITH_UNIT", "MEASURE_WITH_UNIT"}) {
      const Parameters* const record = measure == nullptr ? nullptr : recordOf(*measure, type);
      if (record != nullptr && record->size() == 2) {
        return std::stod(record->at(0).items.at(0).text) *
               lengthOfUnit(instances, record->at(1).text);
      }
    }
  }
  return 0;
}

}  // namespace

Point3 placed(const Placement& placement, const Point3& point) {
  return sum(placement.origin,
             sum(times(placement.axes[0], point.x),
                 sum(times(placement.axes[1], point.y), times(placement.axes[2], point.z))));
}

Placement product(const Placement& outer, const Placement& inner) {
  Placement result;
  result.origin = placed(outer, inner.origin);
  for (std::size_t i = 0; i < 3; ++i) {
    result.axes.at(i) = difference(placed(outer, inner.axes.at(i)), outer.origin);
  }
  return result;
}

Placement inverse(const Placement& placement) {
  const auto& [x, y, z] = placement.axes;
  const double volume = determinant(placement.axes);
  const Point3 rowX = times(cross(y, z), 1 / volume);
  const Point3 rowY = times(cross(z, x), 1 / volume);
  const Point3 rowZ = times(cross(x, y), 1 / volume);
  const Point3& o = placement.origin;
  return {{{{rowX.x, rowY.x, rowZ.x}, {rowX.y, rowY.y, rowZ.y}, {rowX.z, rowY.z, rowZ.z}}},
          {-dot(rowX, o), -dot(rowY, o), -dot(rowZ, o)}};
}

bool isIdentity(const Placement& placement) {
  const Placement identity;
  double deviation = length(placement.origin);
  for (std::size_t i = 0; i < 3; ++i) {
    deviation += length(difference(placement.axes.at(i), identity.axes.at(i)));
  }
  return deviation < 1e-12;
}

bool isMirrored(const Placement& placement) {
  return determinant(placement.axes) < 0;
}

double millimetresPerUnit(const ExchangeInstances& instances, const std::string& context) {
  const ExchangeInstance* const instance = find(instances, context);
  if (instance != nullptr) {
    for (const std::string& unit : referencesOf(*instance)) {
      const double length = lengthOfUnit(instances, unit);
      if (length > 0) {
        return length;
      }
    }
  }
  return 1;
}

Placement placementOf(const ExchangeInstances& instances, const std::string& name, double scale) {
  const ExchangeInstance* const instance = find(instances, name);
  if (instance == nullptr) {
    return {};
  }
  if (const Parameters* const axis2 = recordOf(*instance, "AXIS2_PLACEMENT_3D")) {
    const Point3 z = normalised(directionOf(instances, axis2->at(2), {0, 0, 1}));
    const Point3 x = firstAxis(instances, z, axis2->at(3));
    return {{{x, cross(z, x), z}}, times(vectorOf(instances, axis2->at(1).text), scale)};
  }
  Parameters parameters;
  for (const char* type :
       {"CARTESIAN_TRANSFORMATION_OPERATOR", "CARTESIAN_TRANSFORMATION_OPERATOR_3D"}) {
    if (const Parameters* const record = recordOf(*instance, type)) {
      parameters.insert(parameters.end(), record->begin(), record->end());
    }
  }
  if (parameters.size() < 5) {
    return {};
  }
  // The last five are axis1, axis2, local_origin, scale and axis3, whatever names stand before.
  const Parameter* const last = &parameters[parameters.size() - 5];
  const Point3 z = normalised(directionOf(instances, last[4], {0, 0, 1}));
  const Point3 x = firstAxis(instances, z, last[0]);
  const Point3 y = secondAxis(instances, z, x, last[1]);
  const double factor = last[3].kind == Parameter::Kind::Text ? std::stod(last[3].text) : 1;
  return {{{times(x, factor), times(y, factor), times(z, factor)}},
          times(vectorOf(instances, last[2].text), scale)};
}

}  // namespace plenvorith::test
