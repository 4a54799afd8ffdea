#include "prepare/progress.h"

#include <algorithm>
#include <iostream>

#include <unistd.h>

namespace plenvorith {
namespace {

/// Smaller files take less than a second.
constexpr std::uint64_t kLargeFile = 50'000'000;

}  // namespace

Progress::Progress(std::uint64_t fileSize)
    : fileSize_(fileSize), isShown_(fileSize > kLargeFile && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  wipe();
}

void Progress::show(const char* step, std::uint64_t place) {
  if (!isShown_) {
    return;
  }
  farthest_ = step_ == step ? std::max(farthest_, place) : place;
  step_ = step;
  const std::uint64_t percent = std::min(farthest_, fileSize_) * 100 / fileSize_;
  std::string line = step_;
  line += ' ';
  line += std::to_string(percent);
  line += " %";
  if (line != shown_) {
    wipe();
    shown_ = std::move(line);
    std::cerr << shown_;
  }
}

void Progress::wipe() {
  if (!shown_.empty()) {
    std::cerr << '\r' << std::string(shown_.size(), ' ') << '\r';
    shown_.clear();
  }
}

}  // namespace plenvorith
