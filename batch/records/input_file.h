#pragma once

#include <cstdint>
#include <string>

namespace plenvorith {

/// A file to convert.
struct InputFile {
  std::string path;       ///< absolute, links as they were given
  std::int64_t size = 0;  ///< bytes
};

/// What the header of a STEP file tells of where the file comes from, in its own bytes; what is not
/// there is empty.
struct InputHeader {
  std::string schema;     ///< of FILE_SCHEMA; several with a comma between them
  std::string system;     ///< that wrote it, of FILE_NAME
  std::string timeStamp;  ///< of FILE_NAME

  bool operator==(const InputHeader&) const = default;
};

}  // namespace plenvorith
