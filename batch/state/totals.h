#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "batch/records/file_record.h"

namespace plenvorith {

struct StateHandle;

/// What the files of one status with one reason come to.
struct Total {
  FileStatus status = FileStatus::Failed;
  std::string reason;
  std::int64_t files = 0;
  std::int64_t size = 0;  ///< bytes of the inputs
  std::int64_t triangles = 0;
  double seconds = 0.0;
};

/// The totals of all files; none if the state cannot be read.
std::vector<Total> totalsOf(StateHandle& state);

/// Calls `visit` with at most so many files, in the order of their paths' bytes: first come those that
/// failed, were interrupted or are doubtful. Gives false if the state cannot be read.
bool forEachFileToShow(StateHandle& state, std::int64_t atMost,
                       const std::function<void(const FileRecord&)>& visit);

}  // namespace plenvorith
