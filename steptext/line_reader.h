#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith {

/// Hands out the lines of a file one by one, whatever their length.
///
/// Lines are split at line feeds, which belong to no line; carriage returns stay. A last line
/// without a line feed is a line, a final line feed does not start another one. A file that cannot
/// be read after it was opened (a directory, for example) has no lines.
///
/// Cost    one pass over the file in large blocks; memory for one block, or for the longest line.
class LineReader {
 public:
  explicit LineReader(const std::string& path);

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const;

  /// Sets `line` to the next line, valid until the next call; false at the end of the file.
  [[nodiscard]] bool next(std::string_view& line);

 private:
  bool readMore();

  std::ifstream file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what has not been handed out
  std::size_t end_ = 0;    // of what has been read
};

}  // namespace plenvorith
