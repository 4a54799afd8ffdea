#pragma once

#include <cstdint>
#include <string>

namespace plenvorith {

/// A line in per cent on standard error, for large files and terminals only; wiped at the end of the
/// scope if not before.
class Progress {
 public:
  explicit Progress(std::uint64_t fileSize);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Says how far a step, "Reading" for example, has come in the file. Where it goes back for a
  /// while, what is shown stays.
  void show(const char* step, std::uint64_t place);

  /// Takes the line away, which has to be done before anything else is printed.
  void wipe();

 private:
  std::uint64_t fileSize_;
  bool isShown_;
  std::string shown_;
  std::string step_;
  std::uint64_t farthest_ = 0;  // of the step
};

}  // namespace plenvorith
