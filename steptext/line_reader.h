#pragma once

#include <cstddef>
#include <string_view>

#include "common/block_reader.h"

namespace plenvorith {

/// Hands out the lines of a file one by one, a long one in several pieces.
///
/// Lines are split at line feeds, which belong to no line; carriage returns stay. A last line
/// without a line feed is a line, a final line feed does not start another one. A file that cannot
/// be read has no lines.
///
/// A line of less than 64 KiB is always one piece, and an instance name at the start of a line is
/// never cut. The last piece of a line may be empty.
///
/// Cost    one pass over the file; memory for one piece.
class LineReader {
 public:
  /// Reads the lines from where `file`, which has to live as long as the reader, stands. `rest` is
  /// what comes in front of that: the end of the last block, or nothing.
  explicit LineReader(BlockReader& file, std::string_view rest = {}) : file_(file), rest_(rest) {}

  /// Sets `piece` to the next piece, valid until the next call; false at the end of the file.
  [[nodiscard]] bool next(std::string_view& piece);

  /// Whether the piece is the first of its line.
  [[nodiscard]] bool startsLine() const {
    return startsLine_;
  }

  /// Whether the piece is the last of its line.
  [[nodiscard]] bool endsLine() const {
    return endsLine_;
  }

 private:
  std::string_view handOut(std::size_t size, bool endsLine);

  BlockReader& file_;
  std::string_view rest_;  // of the block, not handed out yet
  bool startsLine_ = true;
  bool endsLine_ = true;
};

}  // namespace plenvorith
