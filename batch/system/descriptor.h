#pragma once

#include <string>

namespace plenvorith {

/// A file descriptor of the system that is closed at the end of its scope.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    close();
  }
  Descriptor(Descriptor&& other) noexcept : descriptor_(other.descriptor_) {
    other.descriptor_ = -1;
  }
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const {
    return descriptor_;
  }
  bool isOpen() const {
    return descriptor_ >= 0;
  }
  void close();

 private:
  int descriptor_ = -1;
};

/// Opens those of the standard streams that are closed to /dev/null: what is opened later would get
/// their numbers, and what is printed would go there.
void openStandardStreams();

/// Writes all of it, waiting where the system is slow; false, with the system's number in errno, if
/// that fails.
[[nodiscard]] bool writeAll(int descriptor, const std::string& bytes);

/// What a file holds, but of a long one only its first and its last half of `atMost` bytes.
std::string readEnds(int descriptor, std::size_t atMost);

}  // namespace plenvorith
