#include "batch/system/descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plenvorith {
namespace {

/// Appends `size` bytes from `offset` on, or fewer if the file ends before.
void appendFrom(int descriptor, std::int64_t offset, std::size_t size, std::string& text) {
  const std::size_t before = text.size();
  text.resize(before + size);
  std::size_t done = 0;
  ssize_t count = 1;
  while (done < size && count > 0) {
    count = pread(descriptor, text.data() + before + done, size - done,
                  offset + static_cast<off_t>(done));
    done += static_cast<std::size_t>(std::max(count, ssize_t{0}));
  }
  text.resize(before + done);
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

void Descriptor::close() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
    descriptor_ = -1;
  }
}

void openStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
      (void)open("/dev/null", O_RDWR);  // gets the lowest number that is free
    }
  }
}

bool writeAll(int descriptor, const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno != EINTR) {
      return false;
    }
    done += static_cast<std::size_t>(std::max(count, ssize_t{0}));
  }
  return true;
}

std::string readEnds(int descriptor, std::size_t atMost) {
  struct stat status {};
  std::string text;
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    return text;
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size <= atMost) {
    appendFrom(descriptor, 0, size, text);
  } else {
    appendFrom(descriptor, 0, atMost / 2, text);
    appendFrom(descriptor, status.st_size - static_cast<off_t>(atMost / 2), atMost / 2, text);
  }
  return text;
}

}  // namespace plenvorith
