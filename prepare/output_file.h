#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace plenvorith {

/// A file that is written in large blocks, with every write looked at.
class OutputFile {
 public:
  /// Creates the file; it is an error if there is one.
  explicit OutputFile(const std::string& path);

  [[nodiscard]] bool isOpen() const {
    return file_ != nullptr;
  }

  void put(char c) {
    *room(1) = c;
    ++size_;
  }
  void put(std::string_view text);
  void put(std::uint64_t number);

  /// Room for `size` bytes, at most 4096, of which `used` are then said to be written.
  [[nodiscard]] char* room(std::size_t size) {
    if (kCapacity - size_ < size) {
      flush();
    }
    return buffer_.get() + size_;
  }
  void used(std::size_t size) {
    size_ += size;
  }

  /// Whether nothing went wrong so far.
  [[nodiscard]] bool isGood() const {
    return isGood_;
  }

  /// Writes what is left and closes the file; false if that or anything before went wrong.
  [[nodiscard]] bool close();

 private:
  static constexpr std::size_t kCapacity = std::size_t{1} << 18U;
  struct CloseFile {
    void operator()(std::FILE* file) const;
  };

  void flush();
  void write(std::string_view text);

  std::unique_ptr<std::FILE, CloseFile> file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t size_ = 0;
  bool isGood_ = true;
};

/// Writes a number as ISO 10303-21 wants it, with a point: the shortest text that reads as the same
/// double again, "1.", "-2.5E-7". Gives the end of what was written, at most 32 bytes.
[[nodiscard]] char* writeReal(char* to, double value);

}  // namespace plenvorith
