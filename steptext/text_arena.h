#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace plenvorith {

/// Memory for many texts, one behind the other, that is given back all at once.
///
/// A text is begun, grows at its end, and is done when the next one begins. Views of texts that are
/// done stay valid as long as the arena, which may be moved. Behind every text there are
/// `kReadable` bytes that may be read, though they mean nothing: a reader that takes many bytes at
/// once need not stop in front of the end.
///
/// Texts can be made in place, too: `room` takes the bytes of a file, `grow` makes them part of the
/// text, which may be changed where it lies, and `beginAt` ends it somewhere in the middle.
///
/// Cost  no allocation for a text; what a block of memory has to spare when a text does not fit any
///       more, and the copy of the text to the next block.
class TextArena {
 public:
  static constexpr std::size_t kReadable = 80;

  /// Expects that all texts together will have about `size` bytes. Memory is asked for when the
  /// first text needs it, and none is touched before it is used.
  void expect(std::size_t size) {
    nextSize_ = size;
  }

  /// Begins a text, which is empty, behind the last one.
  void begin() {
    start_ = end_;
  }

  /// Lets the text grow.
  void append(std::string_view piece) {
    if (piece.size() > room_) {
      moveToNewBlock(piece.size());
    }
    piece.copy(end_, piece.size());
    end_ += piece.size();
    room_ -= piece.size();
  }

  /// The memory behind the text, at least `size` bytes of it. The text may lie elsewhere after that.
  [[nodiscard]] std::span<char> room(std::size_t size) {
    if (size > room_) {
      moveToNewBlock(size);
    }
    return {end_, room_};
  }

  /// Lets the text grow by the first `size` bytes of the room behind it.
  void grow(std::size_t size) {
    end_ += size;
    room_ -= size;
  }

  /// Begins a text that has what is in the one at hand from `offset` on.
  void beginAt(std::size_t offset) {
    start_ += offset;
  }

  /// Takes the first `size` characters off the text, what is behind them moves up.
  void dropFirst(std::size_t size);

  /// The text as it is so far: it may lie elsewhere after the next `append`.
  [[nodiscard]] std::string_view text() const {
    return {start_, static_cast<std::size_t>(end_ - start_)};
  }

  /// The first character of the text, which may be changed.
  [[nodiscard]] char* data() {
    return start_;
  }

 private:
  void moveToNewBlock(std::size_t more);

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t nextSize_ = 0;
  char* start_ = nullptr;
  char* end_ = nullptr;
  std::size_t room_ = 0;  // behind the text, less what has to stay readable
};

}  // namespace plenvorith
