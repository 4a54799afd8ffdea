#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/records/output.h"

namespace plenvorith {

/// What is known of a conversion once it has ended. Times and memory are those of it alone.
struct Outcome {
  std::string reason;    ///< why it failed, or what is doubtful about it; empty if nothing
  std::string lastLine;  ///< the last line of the transcript that tells something; any bytes
  std::optional<int> exitStatus;  ///< of the conversion, if it ended by itself
  std::optional<int> signal;      ///< that ended the conversion
  std::int64_t size = 0;          ///< bytes of the input when it was converted
  std::int64_t mtime = 0;         ///< its time of change, nanoseconds since 1970; -1: says nothing
  std::int64_t changed = -1;      ///< time of change of its status, likewise
  std::int64_t inode = -1;        ///< what the file system knows it by; -1: not known
  InputHeader header;
  std::string hash;  ///< 16 bytes, of its content; empty for what cannot be read twice
  std::int64_t triangles = 0;
  std::optional<Bounds> bounds;  ///< of the STL outputs, if they hold a triangle
  double seconds = 0.0;          ///< wall-clock time of the conversion
  double cpuSeconds = 0.0;       ///< user and system time of it
  std::int64_t peakMemory = 0;   ///< bytes, resident
  std::string host;
  std::vector<OutputRecord> outputs;

  bool operator==(const Outcome&) const = default;
};

}  // namespace plenvorith
