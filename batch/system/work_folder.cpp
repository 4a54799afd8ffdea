#include "batch/system/work_folder.h"

#include <cerrno>
#include <cstdint>
#include <utility>

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/system/folder.h"

namespace plenvorith {
namespace {

/// 16 hexadecimal digits; empty if the system has no random bits.
std::string randomName() {
  constexpr const char* kDigits = "0123456789abcdef";
  std::uint64_t bits = 0;
  if (getrandom(&bits, sizeof bits, 0) != sizeof bits) {
    return {};
  }
  std::string name;
  for (int shift = 60; shift >= 0; shift -= 4) {
    name += kDigits[bits >> shift & 15U];
  }
  return name;
}

}  // namespace

WorkFolder::WorkFolder(const std::string& parent) {
  const std::string name = randomName();
  const std::string path = parent + '/' + name;
  if (!name.empty() && makeFolders(parent) && mkdir(path.c_str(), kFolderRights) == 0) {
    path_ = path;
  }
}

WorkFolder::~WorkFolder() {
  if (!path_.empty()) {
    removeTree(path_);
    (void)rmdir(folderOf(path_).c_str());  // others may have theirs in it
  }
}

WorkFolder::WorkFolder(WorkFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}

WorkFolder& WorkFolder::operator=(WorkFolder&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}

}  // namespace plenvorith
