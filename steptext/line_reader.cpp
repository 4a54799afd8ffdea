#include "steptext/line_reader.h"

namespace plenvorith {
namespace {

/// Longer lines are cut, so that the blocks stay as they are: one line may be most of a large file.
constexpr std::size_t kLargestPiece = std::size_t{1} << 16;

/// Whether the text may be the beginning of an instance name and nothing else yet.
bool mayBeInName(std::string_view text) {
  return text.starts_with('#') && text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

}  // namespace

bool LineReader::next(std::string_view& piece) {
  startsLine_ = endsLine_;
  std::size_t searched = 0;  // bytes known to hold no line feed
  while (true) {
    const std::size_t lineFeed = rest_.find('\n', searched);
    if (lineFeed != std::string_view::npos) {
      piece = handOut(lineFeed, true);
      rest_.remove_prefix(1);
      return true;
    }
    searched = rest_.size();
    if (searched >= kLargestPiece && !(startsLine_ && mayBeInName(rest_))) {
      piece = handOut(searched, false);
      return true;
    }
    if (!file_.next(rest_, searched)) {
      piece = handOut(searched, true);
      return searched > 0 || !startsLine_;
    }
  }
}

/// Takes a piece off the front of what is left.
std::string_view LineReader::handOut(std::size_t size, bool endsLine) {
  const std::string_view piece = rest_.substr(0, size);
  rest_.remove_prefix(size);
  endsLine_ = endsLine;
  return piece;
}

}  // namespace plenvorith
