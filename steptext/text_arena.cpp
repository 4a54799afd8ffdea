#include "steptext/text_arena.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "common/reserve.h"

namespace plenvorith {
namespace {

constexpr std::size_t kSmallestBlock = std::size_t{1} << 16;

}  // namespace

void TextArena::dropFirst(std::size_t size) {
  if (size > 0) {
    end_ = std::copy(start_ + size, end_, start_);
    room_ += size;
  }
}

/// Makes room for `more` bytes behind the text, which moves.
void TextArena::moveToNewBlock(std::size_t more) {
  const std::string_view moved = text();
  const std::size_t needed = 2 * (moved.size() + more);
  std::size_t size = std::max({needed, nextSize_, kSmallestBlock});
  // What was expected may be more than there is.
  std::unique_ptr<char[]> block(new (std::nothrow) char[size + kReadable]);
  if (block == nullptr) {
    size = needed;
    block = std::make_unique_for_overwrite<char[]>(size + kReadable);
  }
  preferLargePages(block.get(), size);
  moved.copy(block.get(), moved.size());
  const bool isAlone = !blocks_.empty() && start_ == blocks_.back().get();
  if (isAlone) {
    blocks_.pop_back();
  }
  nextSize_ = 2 * size;
  start_ = block.get();
  end_ = start_ + moved.size();
  room_ = size - moved.size();
  blocks_.push_back(std::move(block));
}

}  // namespace plenvorith
