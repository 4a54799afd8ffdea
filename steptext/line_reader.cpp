#include "steptext/line_reader.h"

#include <algorithm>
#include <cstring>
#include <ios>

namespace plenvorith {
namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;

}  // namespace

LineReader::LineReader(const std::string& path) : file_(path, std::ios::binary) {
  if (file_.is_open()) {
    buffer_.resize(kBlockSize);
  }
}

bool LineReader::isOpen() const {
  return file_.is_open();
}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = 0;  // bytes of this line known to hold no line feed
  while (true) {
    const char* const start = buffer_.data() + begin_;
    const std::size_t available = end_ - begin_;
    const void* const lineFeed = std::memchr(start + searched, '\n', available - searched);
    if (lineFeed != nullptr) {
      const auto length = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - start);
      line = {start, length};
      begin_ += length + 1;
      return true;
    }
    searched = available;
    if (!readMore()) {
      line = {start, available};
      begin_ = end_;
      return available > 0;
    }
  }
}

/// Reads behind what has not been handed out, which moves to the front; false at the end of the
/// file, with the buffer as it was.
bool LineReader::readMore() {
  if (!file_.good()) {
    return false;
  }
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  if (end_ == buffer_.size()) {
    buffer_.resize(2 * buffer_.size());
  }
  file_.read(buffer_.data() + end_, static_cast<std::streamsize>(buffer_.size() - end_));
  end_ += static_cast<std::size_t>(file_.gcount());
  return true;
}

}  // namespace plenvorith
