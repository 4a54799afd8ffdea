#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

namespace plenvorith::test {

/// A file in memory with a path, for functions that read files and are called very often.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("plenvorith-test", MFD_CLOEXEC)) {
    if (descriptor_ < 0) {
      throw std::runtime_error("no memory file");
    }
  }
  ~MemoryFile() {
    close(descriptor_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Replaces the content and returns the path.
  std::string write(std::string_view content) {
    if (ftruncate(descriptor_, 0) != 0 || pwrite(descriptor_, content.data(), content.size(), 0) !=
                                              static_cast<ssize_t>(content.size())) {
      throw std::runtime_error("cannot write to a memory file");
    }
    return path();
  }

  std::string path() const {
    return "/proc/self/fd/" + std::to_string(descriptor_);
  }

 private:
  int descriptor_;
};

}  // namespace plenvorith::test
