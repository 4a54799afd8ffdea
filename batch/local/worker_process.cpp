#include "batch/local/worker_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace plenvorith {
namespace {

/// Both ends of a pipe, the reading one first.
std::optional<std::pair<Descriptor, Descriptor>> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return std::nullopt;
  }
  return std::pair(Descriptor(ends[0]), Descriptor(ends[1]));
}

/// Starts the program with standard input and output as given; 0 if that fails.
pid_t spawn(int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);

  // What the driver does with signals is its own affair.
  sigset_t none;
  sigset_t usual;
  sigemptyset(&none);
  sigemptyset(&usual);
  sigaddset(&usual, SIGPIPE);
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  std::string name = "plenvorith-batch";
  std::string option = "--worker";
  const std::array<char*, 3> arguments = {name.data(), option.data(), nullptr};
  pid_t process = 0;
  const int error =
      posix_spawn(&process, "/proc/self/exe", &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? process : 0;
}

bool hasEnded(WorkerProcess& worker) {
  if (worker.process != 0 && waitpid(worker.process, nullptr, WNOHANG) != 0) {
    worker.process = 0;
  }
  return worker.process == 0;
}

}  // namespace

std::optional<WorkerProcess> startWorker() {
  auto jobs = makePipe();
  auto results = makePipe();
  if (!jobs || !results) {
    return std::nullopt;
  }
  WorkerProcess worker;
  worker.process = spawn(jobs->first.get(), results->second.get());
  if (worker.process == 0) {
    return std::nullopt;
  }
  worker.jobs = std::move(jobs->second);
  worker.results = std::move(results->first);
  return worker;
}

std::vector<std::string> receiveLines(WorkerProcess& worker, bool& isAlive) {
  std::array<char, 65536> block{};
  const ssize_t count = read(worker.results.get(), block.data(), block.size());
  isAlive = count > 0 || (count < 0 && errno == EINTR);
  worker.pending.append(block.data(), static_cast<std::size_t>(std::max(count, ssize_t{0})));
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = 0; (end = worker.pending.find('\n', start)) != std::string::npos;) {
    lines.push_back(worker.pending.substr(start, end - start));
    start = end + 1;
  }
  worker.pending.erase(0, start);
  return lines;
}

void stopWorkers(std::vector<WorkerProcess>& workers) {
  for (WorkerProcess& worker : workers) {
    worker.jobs.close();
    worker.results.close();
  }
  // Longer than a worker waits for a program that does not want to end.
  constexpr std::chrono::seconds kPatience(8);
  // What waits for a disk that has stalled does not even end when it is killed.
  constexpr std::chrono::seconds kAtMost(10);
  constexpr std::chrono::milliseconds kLook(5);
  const auto start = std::chrono::steady_clock::now();
  while (!std::all_of(workers.begin(), workers.end(), hasEnded)) {
    const auto waited = std::chrono::steady_clock::now() - start;
    if (waited > kAtMost) {
      return;
    }
    if (waited > kPatience) {
      for (const WorkerProcess& worker : workers) {
        if (worker.process != 0) {
          kill(worker.process, SIGKILL);
        }
      }
    }
    std::this_thread::sleep_for(kLook);
  }
}

int buryWorker(WorkerProcess& worker) {
  worker.jobs.close();
  worker.results.close();
  int status = 0;
  const bool isBuried = worker.process != 0 && waitpid(worker.process, &status, 0) > 0;
  worker.process = 0;
  return isBuried && WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

}  // namespace plenvorith
