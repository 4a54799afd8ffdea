#include "batch/records/file_record.h"

#include <array>
#include <cstddef>

namespace plenvorith {

const char* statusName(FileStatus status) {
  constexpr std::array<const char*, 3> kNames = {"converted", "delivering", "failed"};
  return kNames[static_cast<std::size_t>(status)];
}

}  // namespace plenvorith
