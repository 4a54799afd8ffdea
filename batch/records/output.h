#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace plenvorith {

/// The smallest box that holds all corners of all triangles, in model units.
struct Bounds {
  std::array<double, 3> low{};
  std::array<double, 3> high{};

  bool operator==(const Bounds&) const = default;
};

/// A file that a conversion made.
struct OutputRecord {
  std::string path;  ///< below the output folder; any bytes
  std::int64_t size = 0;

  bool operator==(const OutputRecord&) const = default;
};

}  // namespace plenvorith
