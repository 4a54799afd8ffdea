#pragma once

#include <csignal>

namespace plenvorith::test {

/// Restores what the process does with signals at the end of the scope: which are blocked, and what
/// becomes of SIGPIPE. None that was blocked meanwhile may be left waiting.
class ScopedSignals {
 public:
  ScopedSignals() {
    sigprocmask(SIG_SETMASK, nullptr, &mask_);
    sigaction(SIGPIPE, nullptr, &pipe_);
  }
  ~ScopedSignals() {
    sigaction(SIGPIPE, &pipe_, nullptr);
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
  }
  ScopedSignals(const ScopedSignals&) = delete;
  ScopedSignals& operator=(const ScopedSignals&) = delete;

 private:
  sigset_t mask_{};
  struct sigaction pipe_ {};
};

}  // namespace plenvorith::test
