#pragma once

#include <cstdint>
#include <string>

namespace plenvorith {

/// A file to convert.
struct InputFile {
  std::string path;       ///< absolute, links as they were given
  std::int64_t size = 0;  ///< bytes
};

}  // namespace plenvorith
