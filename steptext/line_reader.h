#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith {

/// Hands out the lines of a file one by one, a long one in several pieces.
///
/// Lines are split at line feeds, which belong to no line; carriage returns stay. A last line
/// without a line feed is a line, a final line feed does not start another one. A file that cannot
/// be read after it was opened (a directory, for example) has no lines.
///
/// A line of less than 16 MiB is always one piece, and an instance name at the start of a line is
/// never cut. The last piece of a line may be empty.
///
/// Cost    one pass over the file in large blocks; memory for one piece.
class LineReader {
 public:
  explicit LineReader(const std::string& path);

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const;

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
  void handOut(std::string_view& piece, std::size_t size, bool endsLine);
  bool readMore();

  std::ifstream file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what has not been handed out
  std::size_t end_ = 0;    // of what has been read
  bool startsLine_ = true;
  bool endsLine_ = true;
};

}  // namespace plenvorith
