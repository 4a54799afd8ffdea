#include "product/placement.h"

#include <cmath>
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
std::optional<Vector> readVector(InstanceReader& reader, const Parameter& parameter,
                                 std::string_view keyword) {
  const std::optional<Record> record = reader.read(reader.named(parameter), keyword);
  if (!record || record->parameters.empty() || record->parameters.size() > 2) {
    return std::nullopt;
  }
  const std::vector<Parameter>& items = record->parameters.back().items;
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
std::optional<Vector> readDirection(InstanceReader& reader, const Parameter& parameter) {
  const std::optional<Vector> vector = readVector(reader, parameter, "DIRECTION");
  return vector ? normalised(*vector) : std::nullopt;
}

/// AXIS2_PLACEMENT_3D(name, location, axis, ref_direction); of a complex instance the location stands
/// in PLACEMENT.
std::optional<Placement> readAxes(InstanceReader& reader, const std::vector<Record>& records,
                                  const Record& axes, double unit) {
  std::vector<Parameter> parameters = axes.parameters;
  for (const Record& record : records) {
    if (record.keyword == "PLACEMENT" && record.parameters.size() == 1) {
      parameters.insert(parameters.begin(), {Parameter(), record.parameters[0]});
    }
  }
  if (parameters.size() != 4) {
    return std::nullopt;
  }
  std::optional<Vector> origin = readVector(reader, parameters[1], "CARTESIAN_POINT");
  if (!origin) {
    return std::nullopt;
  }
  const Vector z = readDirection(reader, parameters[2]).value_or(Vector{0, 0, 1});
  const std::optional<Vector> reference = readDirection(reader, parameters[3]);
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
                                      const std::vector<Parameter>& parameters, double unit) {
  const std::size_t count = parameters.size();
  if (count < 5) {
    return std::nullopt;
  }
  const auto parameter = [&parameters, count](std::size_t fromEnd) -> const Parameter& {
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

std::optional<Placement> readPlacement(InstanceReader& reader, InstanceIndex index, double unit) {
  const std::vector<Record> records = reader.read(index);
  std::vector<Parameter> parameters;  // of an operator, which may be a complex instance
  for (const Record& record : records) {
    if (record.keyword == "AXIS2_PLACEMENT_3D") {
      return readAxes(reader, records, record, unit);
    }
    if (record.keyword == "CARTESIAN_TRANSFORMATION_OPERATOR" ||
        record.keyword == "CARTESIAN_TRANSFORMATION_OPERATOR_3D") {
      parameters.insert(parameters.end(), record.parameters.begin(), record.parameters.end());
    }
  }
  return readOperator(reader, parameters, unit);
}

}  // namespace plenvorith
