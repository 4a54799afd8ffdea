#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace plenvorith {

/// Reads a file in blocks, from its start to its end and again from any place.
///
/// A read error ends the file: everything in front of it is handed out. A directory can be opened
/// and has no bytes.
///
/// Cost  memory for one block, which grows only to hold what the caller keeps of the one before.
class BlockReader {
 public:
  explicit BlockReader(const std::string& path);

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const {
    return file_ != nullptr;
  }

  /// Sets `block` to the last `kept` bytes of the block before, with what comes next in the file
  /// behind them; valid until the next call. At the end of the file the result is false and the
  /// block what was kept.
  [[nodiscard]] bool next(std::string_view& block, std::size_t kept = 0);

  /// Reads what comes next in the file into `to`, as many bytes as there is room for or as are left.
  /// Blocks that `next` gave stay what they are; nothing of them can be kept any more.
  ///
  /// Gives  how many; none at the end of the file.
  [[nodiscard]] std::size_t readInto(std::span<char> to);

  /// Whether what ended the file was an error.
  [[nodiscard]] bool hasFailed() const {
    return hasFailed_;
  }

  /// Goes to a place in the file, from which `next` reads on; nothing can be kept across that. The
  /// first block there is a small one, as the next thing that is wanted may be elsewhere. The result
  /// is false, and nothing changes, if the file has no places (a pipe).
  [[nodiscard]] bool seek(std::uint64_t offset);

  /// The number of bytes that the file says it has; 0 if it does not tell (a pipe). Good for
  /// reserving memory only.
  [[nodiscard]] std::uint64_t sizeHint() const;

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const;
  };

  void keep(std::size_t kept);
  std::size_t read(char* to, std::size_t size);

  std::unique_ptr<std::FILE, CloseFile> file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;  // of the block handed out last
  bool isBehindSeek_ = false;
  bool hasEnded_ = false;
  bool hasFailed_ = false;
};

}  // namespace plenvorith
