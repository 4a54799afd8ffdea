#pragma once

#include <optional>
#include <string>

#include <stdlib.h>

namespace plenvorith::test {

/// Sets an environment variable and restores it at the end of the scope.
class ScopedEnv {
 public:
  ScopedEnv(const std::string& name, const std::string& value) : name_(name) {
    if (const char* const before = getenv(name.c_str())) {
      before_ = before;
    }
    setenv(name.c_str(), value.c_str(), 1);
  }
  ~ScopedEnv() {
    if (before_) {
      setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace plenvorith::test
