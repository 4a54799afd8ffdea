#include "batch/report/write_aside.h"

#include <cstdio>
#include <fstream>

namespace plenvorith {

bool writeAside(const std::string& path, const std::function<bool(std::ostream&)>& write) {
  const std::string unfinished = path + ".new";
  std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
  if (!file.is_open()) {
    return false;
  }
  const bool isWhole = write(file);
  file.close();
  const bool isThere = isWhole && file && std::rename(unfinished.c_str(), path.c_str()) == 0;
  if (!isThere) {
    (void)std::remove(unfinished.c_str());
  }
  return isThere;
}

}  // namespace plenvorith
