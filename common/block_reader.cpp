#include "common/block_reader.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace plenvorith {
namespace {

/// Stays in the processor's second-level cache; larger blocks take as long or longer.
constexpr std::size_t kBlockSize = std::size_t{1} << 17;

/// Longer than most instances; what more is wanted of one comes in whole blocks.
constexpr std::size_t kFirstBlockSize = std::size_t{1} << 12;

}  // namespace

void BlockReader::CloseFile::operator()(std::FILE* file) const {
  // Nothing was written that could get lost.
  (void)std::fclose(file);
}

// The C library's streams tell how much they read in front of an error, those of C++ do not.
BlockReader::BlockReader(const std::string& path) : file_(std::fopen(path.c_str(), "rb")) {
  if (file_ != nullptr) {
    // Without a buffer in between, the system writes right into the block.
    (void)std::setvbuf(file_.get(), nullptr, _IONBF, 0);
    capacity_ = kBlockSize;
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
  }
}

bool BlockReader::next(std::string_view& block, std::size_t kept) {
  assert(kept <= size_);
  if (hasEnded_ || !isOpen()) {
    block = {buffer_.get() + size_ - kept, kept};
    return false;
  }
  keep(kept);
  const std::size_t room = capacity_ - kept;
  size_ = kept + read(buffer_.get() + kept, isBehindSeek_ ? std::min(room, kFirstBlockSize) : room);
  isBehindSeek_ = false;
  block = {buffer_.get(), size_};
  return size_ > kept;
}

std::size_t BlockReader::readInto(std::span<char> to) {
  size_ = 0;
  return isOpen() ? read(to.data(), to.size()) : 0;
}

bool BlockReader::seek(std::uint64_t offset) {
  if (!isOpen() || offset > LONG_MAX ||
      std::fseek(file_.get(), static_cast<long>(offset), SEEK_SET) != 0) {
    return false;
  }
  size_ = 0;
  isBehindSeek_ = true;
  hasEnded_ = false;
  hasFailed_ = false;
  return true;
}

std::uint64_t BlockReader::sizeHint() const {
  if (!isOpen()) {
    return 0;
  }
  const long place = std::ftell(file_.get());
  if (place < 0 || std::fseek(file_.get(), 0, SEEK_END) != 0) {
    return 0;
  }
  const long size = std::ftell(file_.get());
  // The place was one a moment ago.
  (void)std::fseek(file_.get(), place, SEEK_SET);
  return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

/// Moves the last `kept` bytes to the front of a buffer with as much room behind them.
void BlockReader::keep(std::size_t kept) {
  const char* const start = buffer_.get() + size_ - kept;
  if (kept <= capacity_ / 2) {
    std::memmove(buffer_.get(), start, kept);
    return;
  }
  auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity_);
  std::memcpy(larger.get(), start, kept);
  buffer_ = std::move(larger);
  capacity_ *= 2;
}

/// Reads `size` bytes, or fewer if the file ends.
std::size_t BlockReader::read(char* to, std::size_t size) {
  std::size_t done = 0;
  while (done < size && !hasEnded_) {
    errno = 0;
    const std::size_t wanted = size - done;
    const std::size_t count = std::fread(to + done, 1, wanted, file_.get());
    done += count;
    if (count < wanted && std::ferror(file_.get()) != 0 && errno == EINTR) {
      std::clearerr(file_.get());  // a signal is no error
    } else if (count < wanted) {
      hasEnded_ = true;
      hasFailed_ = std::ferror(file_.get()) != 0;
    }
  }
  return done;
}

}  // namespace plenvorith
