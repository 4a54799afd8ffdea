// Preloaded into the program: what it opens as "failing.step" cannot be read beyond 200,000 bytes,
// as on a disk with a bad block.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr off_t kReadable = 200'000;

int descriptorOf(void* cookie) {
  return *static_cast<int*>(cookie);
}

ssize_t readUpToTheLimit(void* cookie, char* buffer, size_t size) {
  const off_t place = lseek(descriptorOf(cookie), 0, SEEK_CUR);
  if (place >= kReadable) {
    errno = EIO;
    return -1;
  }
  const auto left = static_cast<size_t>(kReadable - place);
  return read(descriptorOf(cookie), buffer, size < left ? size : left);
}

int seekTo(void* cookie, off64_t* place, int whence) {
  *place = lseek(descriptorOf(cookie), *place, whence);
  return *place < 0 ? -1 : 0;
}

int closeIt(void* cookie) {
  const std::unique_ptr<int> descriptor(static_cast<int*>(cookie));
  return close(*descriptor);
}

}  // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): <stdio.h> has reserved names
extern "C" FILE* fopen(const char* path, const char* mode) {
  if (std::strcmp(path, "failing.step") != 0) {
    const auto next =
        reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    return next(path, mode);
  }
  auto descriptor = std::make_unique<int>(open(path, O_RDONLY | O_CLOEXEC));
  if (*descriptor < 0) {
    return nullptr;
  }
  return fopencookie(descriptor.release(), mode, {readUpToTheLimit, nullptr, seekTo, closeIt});
}
