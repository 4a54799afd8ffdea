#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include <stdlib.h>

namespace plenvorith::test {

/// Lets this process keep its temporary files in `directory` until the end of the scope, so that
/// tests that run at one time and name their files alike do not meet.
class ScopedTmpdir {
 public:
  explicit ScopedTmpdir(const std::string& directory) {
    if (const char* before = std::getenv("TMPDIR")) {
      before_ = before;
    }
    setenv("TMPDIR", directory.c_str(), 1);
  }
  ~ScopedTmpdir() {
    if (before_) {
      setenv("TMPDIR", before_->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
  ScopedTmpdir(const ScopedTmpdir&) = delete;
  ScopedTmpdir& operator=(const ScopedTmpdir&) = delete;

 private:
  std::optional<std::string> before_;
};

}  // namespace plenvorith::test
