#include "batch/system/signals.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace plenvorith {

Descriptor listenToSignals(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    struct sigaction action {};
    // Whoever started this process, as nohup, wants those that it ignores to stay ignored.
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_IGN) {
      sigaddset(&set, signal);
    }
  }
  sigprocmask(SIG_BLOCK, &set, nullptr);
  return Descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

int nextSignal(int listener) {
  signalfd_siginfo info{};
  return read(listener, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo) : 0;
}

}  // namespace plenvorith
