#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "common/block_reader.h"
#include "exchange/byte_scan.h"

namespace plenvorith {

/// The bytes of a STEP file as they stand in it, in blocks.
///
/// Errors  the file ends where it cannot be read on, and `error` tells why.
/// Memory  one block, which grows only to hold what is asked for at once.
class RawText {
 public:
  explicit RawText(const std::string& path) : file_(path) {}

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const {
    return file_.isOpen();
  }

  /// Calls `hook` with the place in the file whenever a block was read.
  void onBlock(std::function<void(std::uint64_t)> hook);

  /// What is at hand of what comes next; valid until more is read.
  [[nodiscard]] std::string_view atHand() const {
    return {block_.data() + begin_, block_.size() - begin_};
  }

  /// Goes over bytes that are at hand.
  void skip(std::size_t size) {
    begin_ += size;
  }

  /// Reads more behind what is at hand; false at the end of the file.
  [[nodiscard]] bool readMore();

  /// Reads until so many bytes are at hand; false if the file ends before.
  [[nodiscard]] bool ensure(std::size_t size);

  /// Goes over blanks and comments. Gives the byte behind them, which stays, or -1 at the end of the
  /// file.
  [[nodiscard]] int peek() {
    const char c = begin_ == block_.size() ? ' ' : block_[begin_];
    return isIgnored(c) || c == '/' ? peekBehindBlanks() : static_cast<unsigned char>(c);
  }

  /// Where in the file stands what comes next.
  [[nodiscard]] std::uint64_t offset() const {
    return blockEnd_ - (block_.size() - begin_);
  }

  /// Goes to a place in the file; false, with an error, if that cannot be done.
  [[nodiscard]] bool seek(std::uint64_t offset);

  /// Notes what is wrong with the file; what was noted first stays.
  void fail(const char* what);

  /// What is wrong with the file; empty if nothing is.
  [[nodiscard]] const std::string& error() const {
    return error_;
  }

 private:
  int peekBehindBlanks();
  void skipComment();

  BlockReader file_;
  std::function<void(std::uint64_t)> hook_;
  std::string_view block_;
  std::size_t begin_ = 0;       // of what is at hand, in the block
  std::uint64_t blockEnd_ = 0;  // in the file
  std::string error_;
};

}  // namespace plenvorith
