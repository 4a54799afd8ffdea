#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/records/output.h"

namespace plenvorith {

enum class FileStatus {
  Converted,   ///< all outputs are in their places, in the recorded sizes
  Delivering,  ///< some of the outputs may be in their places: the input counts as not converted
  Failed,      ///< no output belongs to the input, but for those that could not be deleted yet
};

/// What is known of one input and of its last conversion.
struct FileRecord {
  std::string path;  ///< absolute path of the input, its key; any bytes
  std::string name;  ///< path below the base, which the names of the outputs begin with; any bytes
  std::int64_t run = 0;  ///< id of the run that converted it last
  FileStatus status = FileStatus::Failed;
  std::string reason;    ///< why it failed, or what is doubtful about it; empty if nothing
  std::string lastLine;  ///< the last line of the transcript that tells something; any bytes
  std::optional<int> exitStatus;  ///< of the conversion, if it ended by itself
  std::optional<int> signal;      ///< that ended the conversion
  std::int64_t size = 0;          ///< bytes of the input when it was converted
  std::int64_t mtime = 0;         ///< its time of change, nanoseconds since 1970; -1: says nothing
  std::int64_t changed = -1;      ///< time of change of its status, likewise
  std::int64_t inode = -1;        ///< what the file system knows it by; -1: not known
  InputHeader header;
  std::string hash;      ///< 16 bytes, of its content; empty for what cannot be read twice
  std::string settings;  ///< all that decides what is made of it, as one text
  std::string program;   ///< name and version of program and kernel
  std::int64_t triangles = 0;
  double seconds = 0.0;          ///< wall-clock time of the conversion
  double cpuSeconds = 0.0;       ///< user and system time of it
  std::int64_t peakMemory = 0;   ///< bytes, resident
  std::optional<Bounds> bounds;  ///< of the STL outputs, if they hold a triangle
  std::string host;
  /// All files in the output folder that may come from this input, whatever the status.
  std::vector<OutputRecord> outputs;
};

/// The name of a status in the state, in exports and in reports.
const char* statusName(FileStatus status);

}  // namespace plenvorith
