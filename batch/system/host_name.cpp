#include "batch/system/host_name.h"

#include <array>
#include <climits>

#include <unistd.h>

namespace plenvorith {

std::string hostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

}  // namespace plenvorith
