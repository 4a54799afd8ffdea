#include "batch/system/process.h"

#include <array>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace plenvorith {
namespace {

constexpr int kCannotStart = 127;  // as a shell says it

/// Makes the copy of a process what a program is that a shell has just started.
bool setUp(const ProcessSetup& setup, pid_t parent) {
  sigset_t none;
  sigemptyset(&none);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  const auto give = [nothing](int descriptor, int stream) {
    return dup2(descriptor >= 0 ? descriptor : nothing, stream) >= 0;
  };
  (void)signal(SIGPIPE, SIG_DFL);  // that this process may ignore it is its own affair
  if (setup.endSignal > 0) {
    (void)signal(setup.endSignal, SIG_DFL);
  }
  // The streams come first: what is said of the others belongs there. Whoever started it may have
  // ended before it asked for the signal.
  return give(setup.input, STDIN_FILENO) && give(setup.output, STDOUT_FILENO) &&
         give(setup.errors, STDERR_FILENO) && setpgid(0, 0) == 0 &&
         prctl(PR_SET_PDEATHSIG, setup.endSignal) == 0 &&
         (setup.endSignal == 0 || getppid() == parent) &&
         (setup.folder.empty() || chdir(setup.folder.c_str()) == 0) &&
         sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

}  // namespace

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return std::nullopt;
  }
  return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

pid_t startProcess(const ProcessSetup& setup, const std::function<void()>& become) {
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process == 0) {
    if (setUp(setup, parent)) {
      become();
    } else {
      (void)writeAll(STDERR_FILENO, "plenvorith-batch: cannot set up the process\n");
    }
    _exit(kCannotStart);
  }
  if (process < 0) {
    return 0;
  }
  (void)setpgid(process, process);  // whichever of the two processes is first
  return process;
}

void becomeProgram(const std::string& path, const std::vector<std::string>& arguments) {
  (void)execv(path.c_str(), pointersTo(arguments).data());
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace plenvorith
