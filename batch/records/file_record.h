#pragma once

#include <cstdint>
#include <string>

#include "batch/records/outcome.h"

namespace plenvorith {

enum class FileStatus {
  Converted,   ///< all outputs are in their places, in the recorded sizes
  Delivering,  ///< some of the outputs may be in their places: the input counts as not converted
  Failed,      ///< no output belongs to the input, but for those that could not be deleted yet
};

/// What is known of one input and of its last conversion. Its outputs are all files in the output
/// folder that may come from it, whatever the status.
struct FileRecord : Outcome {
  std::string path;  ///< absolute path of the input, its key; any bytes
  std::string name;  ///< path below the base, which the names of the outputs begin with; any bytes
  std::int64_t run = 0;  ///< id of the run that converted it last
  FileStatus status = FileStatus::Failed;
  std::string settings;  ///< all that decides what is made of it, as one text
  std::string program;   ///< name and version of program and kernel
  std::string sameAs;  ///< path of an input with the same bytes whose outputs were copied; or empty

  bool operator==(const FileRecord&) const = default;
};

/// The name of a status in the state, in exports and in reports.
const char* statusName(FileStatus status);

}  // namespace plenvorith
