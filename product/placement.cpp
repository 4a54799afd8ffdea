#include "product/placement.h"

#include <cmath>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace plenvorith {
namespace {

using Vector = std::array<double, 3>;

double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Of unit length; nothing if it is next to nothing.
std::optional<Vector> normalised(const Vector& a) {
  const double length = std::sqrt(dot(a, a));
  if (!(length > 1e-100) || !std::isfinite(length)) {
    return std::nullopt;
  }
  return Vector{a[0] / length, a[1] / length, a[2] / length};
}

/// The part of `a` that is at right angles to the unit vector `z`, of unit length.
std::optional<Vector> projected(const Vector& a, const Vector& z) {
  const std::optional<Vector> unit = normalised(a);
  if (!unit) {
    return std::nullopt;
  }
  const double along = dot(*unit, z);
  const Vector rest = {(*unit)[0] - along * z[0], (*unit)[1] - along * z[1],
                       (*unit)[2] - along * z[2]};
  return dot(rest, rest) < 1e-24 ? std::nullopt : normalised(rest);
}

/// The x axis where none is given or it is parallel to z: ISO 10303-42, first_proj_axis.
Vector defaultX(const Vector& z) {
  const std::optional<Vector> x = projected({1, 0, 0}, z);
  return x ? *x : *projected({0, 1, 0}, z);
}

Placement fromAxes(const Vector& x, const Vector& y, const Vector& z, const Vector& origin) {
  Placement placement;
  for (std::size_t i = 0; i < 3; ++i) {
    placement.m[i] = {x[i], y[i], z[i], origin[i]};
  }
  return placement;
}

/// The numbers of a CARTESIAN_POINT or DIRECTION; a missing third one is 0.
std::optional<Vector> readVector(InstanceReader& reader, std::string_view parameter,
                                 std::string_view keyword) {
  const std::optional<Record> record = reader.read(reader.named(parameter), keyword);
  if (!record || record->parameters.size() != 2) {
    return std::nullopt;
  }
  const std::vector<std::string> items = splitList(record->parameters[1]);
  if (items.empty() || items.size() > 3) {
    return std::nullopt;
  }
  Vector vector{};
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::optional<double> number = numberOf(items[i]);
    if (!number) {
      return std::nullopt;
    }
    vector[i] = *number;
  }
  return vector;
}

/// A direction that may be left out.
std::optional<Vector> readDirection(InstanceReader& reader, std::string_view parameter) {
  const std::optional<Vector> vector = readVector(reader, parameter, "DIRECTION");
  return vector ? normalised(*vector) : std::nullopt;
}

/// AXIS2_PLACEMENT_3D(name, location, axis, ref_direction)
std::optional<Placement> readAxes(InstanceReader& reader, const Record& record, double unit) {
  if (record.parameters.size() != 4) {
    return std::nullopt;
  }
  std::optional<Vector> origin = readVector(reader, record.parameters[1], "CARTESIAN_POINT");
  if (!origin) {
    return std::nullopt;
  }
  const Vector z = readDirection(reader, record.parameters[2]).value_or(Vector{0, 0, 1});
  const std::optional<Vector> reference = readDirection(reader, record.parameters[3]);
  const std::optional<Vector> given = reference ? projected(*reference, z) : std::nullopt;
  const Vector x = given ? *given : defaultX(z);
  for (double& coordinate : *origin) {
    coordinate *= unit;
  }
  return fromAxes(x, cross(z, x), z, *origin);
}

/// Of a CARTESIAN_TRANSFORMATION_OPERATOR_3D: ..., axis1, axis2, local_origin, scale, axis3; how
/// many names come first depends on the edition.
std::optional<Placement> readOperator(InstanceReader& reader,
                                      const std::vector<std::string>& parameters, double unit) {
  const std::size_t count = parameters.size();
  if (count < 5) {
    return std::nullopt;
  }
  const auto parameter = [&parameters, count](std::size_t fromEnd) -> const std::string& {
    return parameters[count - fromEnd];
  };
  std::optional<Vector> origin = readVector(reader, parameter(3), "CARTESIAN_POINT");
  const double scale = numberOf(parameter(2)).value_or(1.0);
  if (!origin || scale == 0.0) {
    return std::nullopt;
  }
  const Vector z = readDirection(reader, parameter(1)).value_or(Vector{0, 0, 1});
  const std::optional<Vector> axis1 = readDirection(reader, parameter(5));
  const std::optional<Vector> axis2 = readDirection(reader, parameter(4));
  const std::optional<Vector> given = axis1 ? projected(*axis1, z) : std::nullopt;
  const Vector x = given ? *given : defaultX(z);
  Vector y = cross(z, x);
  // Left out, axis2 is the y axis (second_proj_axis), which may be on the other side.
  if (dot(axis2.value_or(Vector{0, 1, 0}), y) < 0) {
    y = {-y[0], -y[1], -y[2]};
  }
  for (double& coordinate : *origin) {
    coordinate *= unit;
  }
  Placement placement = fromAxes(x, y, z, *origin);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      placement.m[i][j] *= scale;
    }
  }
  return placement;
}

/// The factor of an SI prefix.
std::optional<double> prefixFactor(std::string_view prefix) {
  using Named = std::pair<std::string_view, double>;
  static constexpr std::array kPrefixes = std::to_array<Named>({
      {".EXA.", 1e18},
      {".PETA.", 1e15},
      {".TERA.", 1e12},
      {".GIGA.", 1e9},
      {".MEGA.", 1e6},
      {".KILO.", 1e3},
      {".HECTO.", 1e2},
      {".DECA.", 1e1},
      {"$", 1e0},
      {".DECI.", 1e-1},
      {".CENTI.", 1e-2},
      {".MILLI.", 1e-3},
      {".MICRO.", 1e-6},
      {".NANO.", 1e-9},
      {".PICO.", 1e-12},
      {".FEMTO.", 1e-15},
      {".ATTO.", 1e-18},
  });
  for (const auto& [name, factor] : kPrefixes) {
    if (name == prefix) {
      return factor;
    }
  }
  return std::nullopt;
}

/// The millimetres in a unit, which a chain of conversions may lead to.
std::optional<double> readLengthUnit(InstanceReader& reader, InstanceIndex unit) {
  constexpr int kLongestChain = 16;
  double factor = 1.0;
  for (int i = 0; i < kLongestChain; ++i) {
    InstanceIndex base = kNoInstance;
    for (const Record& record : reader.read(unit)) {
      const std::size_t count = record.parameters.size();
      if (record.keyword == "SI_UNIT" && count >= 2) {
        const std::optional<double> prefix = prefixFactor(record.parameters[count - 2]);
        // Multiplied before it is used, so that millimetres are exactly 1.
        return prefix && record.parameters[count - 1] == ".METRE."
                   ? std::optional(factor * (*prefix * 1000.0))
                   : std::nullopt;
      }
      if (record.keyword == "CONVERSION_BASED_UNIT" && count >= 2) {
        base = reader.named(record.parameters[count - 1]);
      }
    }
    unit = kNoInstance;
    for (const Record& record : reader.read(base)) {
      // LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#12), or its parts
      if (record.parameters.size() == 2) {
        const std::vector<Record> measure = splitRecords(record.parameters[0]);
        const std::optional<double> value = measure.size() == 1 && measure[0].parameters.size() == 1
                                                ? numberOf(measure[0].parameters[0])
                                                : numberOf(record.parameters[0]);
        if (!value || !(*value > 0)) {
          return std::nullopt;
        }
        factor *= *value;
        unit = reader.named(record.parameters[1]);
      }
    }
  }
  return std::nullopt;
}

bool isLengthUnit(const std::vector<Record>& records) {
  for (const Record& record : records) {
    const bool isMetre = record.keyword == "SI_UNIT" && !record.parameters.empty() &&
                         record.parameters.back() == ".METRE.";
    if (record.keyword == "LENGTH_UNIT" || isMetre) {
      return true;
    }
  }
  return false;
}

}  // namespace

Placement operator*(const Placement& outer, const Placement& inner) {
  Placement product;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 4; ++j) {
      product.m[i][j] = outer.m[i][0] * inner.m[0][j] + outer.m[i][1] * inner.m[1][j] +
                        outer.m[i][2] * inner.m[2][j] + (j == 3 ? outer.m[i][3] : 0.0);
    }
  }
  return product;
}

std::optional<Placement> inverse(const Placement& placement) {
  const auto& m = placement.m;
  const auto minor = [&m](std::size_t i, std::size_t j) {
    const std::size_t i1 = (i + 1) % 3;
    const std::size_t i2 = (i + 2) % 3;
    const std::size_t j1 = (j + 1) % 3;
    const std::size_t j2 = (j + 2) % 3;
    return m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1];
  };
  const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
  if (determinant == 0.0 || !std::isfinite(1.0 / determinant)) {
    return std::nullopt;
  }
  Placement result;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      result.m[i][j] = minor(j, i) / determinant;
    }
  }
  for (std::size_t i = 0; i < 3; ++i) {
    result.m[i][3] =
        -(result.m[i][0] * m[0][3] + result.m[i][1] * m[1][3] + result.m[i][2] * m[2][3]);
  }
  return result;
}

bool isIdentity(const Placement& placement) {
  const Placement identity;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 4; ++j) {
      if (!(std::abs(placement.m[i][j] - identity.m[i][j]) <= 1e-12)) {
        return false;
      }
    }
  }
  return true;
}

bool isMirrored(const Placement& placement) {
  const auto& m = placement.m;
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
             m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]) <
         0.0;
}

Placement scaled(const Placement& placement, double factor) {
  Placement result = placement;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      result.m[i][j] *= factor;
    }
  }
  return result;
}

std::optional<double> readUnit(InstanceReader& reader, InstanceIndex context) {
  const std::optional<Record> record = reader.read(context, "GLOBAL_UNIT_ASSIGNED_CONTEXT");
  if (!record || record->parameters.empty()) {
    return std::nullopt;
  }
  for (const std::string& parameter : splitList(record->parameters.back())) {
    const InstanceIndex unit = reader.named(parameter);
    if (isLengthUnit(reader.read(unit))) {
      return readLengthUnit(reader, unit);
    }
  }
  return std::nullopt;
}

std::optional<Placement> readPlacement(InstanceReader& reader, InstanceIndex index, double unit) {
  std::vector<std::string> parameters;  // of an operator, which may be a complex instance
  for (const Record& record : reader.read(index)) {
    if (record.keyword == "AXIS2_PLACEMENT_3D") {
      return readAxes(reader, record, unit);
    }
    if (record.keyword == "CARTESIAN_TRANSFORMATION_OPERATOR" ||
        record.keyword == "CARTESIAN_TRANSFORMATION_OPERATOR_3D") {
      parameters.insert(parameters.end(), record.parameters.begin(), record.parameters.end());
    }
  }
  return readOperator(reader, parameters, unit);
}

}  // namespace plenvorith
