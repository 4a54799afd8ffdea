#include "tests/support/run_program.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace plenvorith::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr id_t kNobody = 65534;

/// A file descriptor that programs started meanwhile do not inherit.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {
    if (fd < 0) {
      throw std::runtime_error("no file descriptor");
    }
  }
  ~Descriptor() {
    close();
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const {
    return fd_;
  }
  void close() {
    if (fd_ >= 0) {
      ::close(fd_);
      fd_ = -1;
    }
  }

 private:
  int fd_;
};

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  return ends;
}

std::vector<std::string> environmentOf(const Command& command) {
  std::vector<std::string> environment = command.environment;
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) {
      environment.push_back(std::string(name) + "=" + value);
    }
  }
  if (command.withoutRights) {
    // The file of suppressions may lie where only root can read.
    environment.emplace_back("LSAN_OPTIONS=detect_leaks=0");
  } else if (const char* value = std::getenv("LSAN_OPTIONS")) {
    // Otherwise the sanitizer adds to standard error which suppressions it has used.
    environment.push_back(std::string("LSAN_OPTIONS=") + value + ":print_suppressions=0");
  }
  return environment;
}

/// The strings as a list that ends with a null pointer; they have to outlive it.
std::vector<char*> pointersTo(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (std::string& string : strings) {
    pointers.push_back(string.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void stopChild(std::string_view what) {
  (void)!write(STDERR_FILENO, what.data(), what.size());
  _exit(127);
}

void giveUpRights() {
  if (geteuid() == 0 &&
      (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
    stopChild("cannot give up root's rights\n");
  }
}

/// What the child does between fork and exec: nothing that allocates memory.
[[noreturn]] void becomeProgram(const Command& command, int program, char* const* arguments,
                                char* const* environment) {
  if (chdir(command.directory.c_str()) != 0) {
    stopChild("cannot change to the working directory\n");
  }
  if (command.ignoredSignal != 0 && std::signal(command.ignoredSignal, SIG_IGN) == SIG_ERR) {
    stopChild("cannot ignore the signal\n");
  }
  const rlimit noCore{0, 0};
  if (setrlimit(RLIMIT_CORE, &noCore) != 0) {
    stopChild("cannot switch off core files\n");
  }
  if (command.withoutRights) {
    giveUpRights();
  }
  for (const ResourceLimit& limit : command.limits) {
    const rlimit both{limit.value, limit.value};
    if (setrlimit(limit.resource, &both) != 0) {
      stopChild("cannot set the limit\n");
    }
  }
  // By its descriptor: without root's rights the way to the program may be barred.
  fexecve(program, arguments, environment);
  // The system has no path for an emulator then.
  execve(command.program.c_str(), arguments, environment);
  stopChild("cannot start the program\n");
}

/// Appends what has arrived; false at the end of the stream.
bool drain(int fd, std::string& text) {
  std::array<char, 65536> block{};
  const ssize_t count = ::read(fd, block.data(), block.size());
  if (count > 0) {
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return count > 0;
}

/// Collects both streams until the program has closed them; false once the time is up.
bool collect(int out, int err, std::chrono::minutes timeLimit, Outcome& outcome) {
  const Clock::time_point deadline = Clock::now() + timeLimit;
  std::array<pollfd, 2> streams = {pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
      return false;
    }
    poll(streams.data(), streams.size(), static_cast<int>(left));
    for (pollfd& stream : streams) {
      if (stream.revents != 0 && !drain(stream.fd, stream.fd == out ? outcome.out : outcome.err)) {
        stream.fd = -1;
      }
    }
  }
  return true;
}

}  // namespace

Outcome runProgram(const Command& command) {
  std::vector<std::string> arguments = command.arguments;
  arguments.insert(arguments.begin(), command.program);
  std::vector<std::string> environment = environmentOf(command);
  const std::vector<char*> argumentPointers = pointersTo(arguments);
  const std::vector<char*> environmentPointers = pointersTo(environment);

  const Descriptor program(open(command.program.c_str(), O_RDONLY | O_CLOEXEC));
  const Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const std::array<int, 2> outPipe = makePipe();
  const Descriptor out(outPipe[0]);
  Descriptor childOut(outPipe[1]);
  const std::array<int, 2> errPipe = makePipe();
  const Descriptor err(errPipe[0]);
  Descriptor childErr(errPipe[1]);

  const pid_t child = fork();
  if (child < 0) {
    throw std::runtime_error("cannot fork");
  }
  if (child == 0) {
    dup2(nothing.get(), STDIN_FILENO);
    dup2(childOut.get(), STDOUT_FILENO);
    dup2(childErr.get(), STDERR_FILENO);
    becomeProgram(command, program.get(), argumentPointers.data(), environmentPointers.data());
  }
  childOut.close();
  childErr.close();

  Outcome outcome;
  if (!collect(out.get(), err.get(), command.timeLimit, outcome)) {
    outcome.timedOut = true;
    kill(child, SIGKILL);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) {
    throw std::runtime_error("cannot wait for the program");
  }
  outcome.peakMemory = std::int64_t{1024} * usage.ru_maxrss;
  if (WIFEXITED(status)) {
    outcome.exitStatus = WEXITSTATUS(status);
  } else {
    outcome.signal = WTERMSIG(status);
  }
  return outcome;
}

}  // namespace plenvorith::test
