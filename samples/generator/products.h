#pragma once

#include <cstddef>
#include <string>

#include "common/triangle.h"
#include "samples/generator/step_entities.h"

namespace plenvorith::samples {

// What every file needs around its geometry. Each function appends entities.

enum class LengthUnit { Millimetre, Inch };

/// A representation context, as "#12".
std::string addContext(Entities& entities, LengthUnit unit);

/// A product whose shape is the representation `shape`; gives its definition.
std::size_t addProduct(Entities& entities, const std::string& name, std::size_t shape);

/// A place, and the directions of its z and x axes, of unit length.
struct Axes {
  Point3 origin;
  Point3 z{0, 0, 1};
  Point3 x{1, 0, 0};
};
std::size_t addAxes(Entities& entities, const Axes& axes);

/// A product and its shape, for usages.
struct Part {
  std::size_t definition = 0;
  std::size_t representation = 0;
};

/// One usage of a part in a whole, its own origin put at `axes`, an instance of the whole.
void addUsage(Entities& entities, const Part& whole, const Part& part, const std::string& name,
              std::size_t axes, std::size_t axesOfPart);

}  // namespace plenvorith::samples
