#include "steptext/line_reader.h"

#include <algorithm>
#include <cstring>
#include <ios>

namespace plenvorith {
namespace {

/// Stays in the processor's second-level cache; larger blocks take as long or longer.
constexpr std::size_t kBlockSize = std::size_t{1} << 17;

/// Longer lines are cut, so that one line that is most of a large file is not in memory twice.
constexpr std::size_t kLargestPiece = std::size_t{16} << 20;

/// Whether the text may be the beginning of an instance name and nothing else yet.
bool mayBeInName(std::string_view text) {
  return text.starts_with('#') && text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

}  // namespace

LineReader::LineReader(const std::string& path) : file_(path, std::ios::binary) {
  if (file_.is_open()) {
    buffer_.resize(kBlockSize);
  }
}

bool LineReader::isOpen() const {
  return file_.is_open();
}

bool LineReader::next(std::string_view& piece) {
  startsLine_ = endsLine_;
  std::size_t searched = 0;  // bytes known to hold no line feed
  while (true) {
    const char* const start = buffer_.data() + begin_;
    const std::size_t available = end_ - begin_;
    const void* const lineFeed = std::memchr(start + searched, '\n', available - searched);
    if (lineFeed != nullptr) {
      const auto size = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - start);
      handOut(piece, size, true);
      ++begin_;
      return true;
    }
    searched = available;
    if (available >= kLargestPiece && !(startsLine_ && mayBeInName({start, available}))) {
      handOut(piece, available, false);
      return true;
    }
    if (!readMore()) {
      const bool hasPiece = available > 0 || !startsLine_;
      handOut(piece, available, true);
      return hasPiece;
    }
  }
}

void LineReader::handOut(std::string_view& piece, std::size_t size, bool endsLine) {
  piece = {buffer_.data() + begin_, size};
  begin_ += size;
  endsLine_ = endsLine;
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
