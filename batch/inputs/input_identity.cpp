#include "batch/inputs/input_identity.h"

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include "batch/system/descriptor.h"

namespace plenvorith {
namespace {

struct FreeHashState {
  void operator()(XXH3_state_t* state) const {
    XXH3_freeState(state);
  }
};

std::int64_t nanosecondsOf(const timespec& time) {
  constexpr std::int64_t kNanoseconds = 1000000000;
  return time.tv_sec * kNanoseconds + time.tv_nsec;
}

}  // namespace

std::optional<InputIdentity> identityOf(const std::string& path, int& error) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    error = errno;
    return std::nullopt;
  }
  return InputIdentity{status.st_size, nanosecondsOf(status.st_mtim), nanosecondsOf(status.st_ctim),
                       static_cast<std::int64_t>(status.st_ino), S_ISREG(status.st_mode)};
}

bool isSame(const InputIdentity& a, const InputIdentity& b) {
  return a.size == b.size && a.mtime == b.mtime && a.changed == b.changed && a.inode == b.inode;
}

std::int64_t nanosecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return nanosecondsOf(now);
}

std::string contentHash(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.isOpen()) {
    return {};
  }
  constexpr std::size_t kBlockSize = std::size_t{1} << 18;
  std::vector<char> block(kBlockSize);
  const std::unique_ptr<XXH3_state_t, FreeHashState> state(XXH3_createState());
  XXH3_128bits_reset(state.get());
  ssize_t count = 0;
  while ((count = read(file.get(), block.data(), block.size())) > 0) {
    XXH3_128bits_update(state.get(), block.data(), static_cast<std::size_t>(count));
  }
  if (count < 0) {
    return {};
  }
  XXH128_canonical_t hash{};
  XXH128_canonicalFromHash(&hash, XXH3_128bits_digest(state.get()));
  return {reinterpret_cast<const char*>(hash.digest), sizeof hash.digest};
}

}  // namespace plenvorith
