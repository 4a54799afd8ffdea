#include "batch/local/worker_process.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include "batch/system/lines.h"
#include "batch/system/process.h"

namespace plenvorith {
namespace {

bool hasEnded(WorkerProcess& worker) {
  if (worker.process != 0 && waitpid(worker.process, nullptr, WNOHANG) != 0) {
    worker.process = 0;
  }
  return worker.process == 0;
}

}  // namespace

std::optional<WorkerProcess> startWorker() {
  std::optional<Pipe> jobs = makePipe();
  std::optional<Pipe> results = makePipe();
  if (!jobs || !results) {
    return std::nullopt;
  }
  WorkerProcess worker;
  // It ends when nobody reads its results, and tidies up.
  worker.process = startProcess({.input = jobs->read.get(),
                                 .output = results->write.get(),
                                 .errors = STDERR_FILENO,
                                 .endSignal = 0},
                                [] {
                                  becomeProgram("/proc/self/exe", {"plenvorith-batch", "--worker"});
                                });
  if (worker.process == 0) {
    return std::nullopt;
  }
  worker.jobs = std::move(jobs->write);
  worker.results = std::move(results->read);
  return worker;
}

std::vector<std::string> receiveLines(WorkerProcess& worker, bool& isAlive) {
  isAlive = readMore(worker.results.get(), worker.pending);
  return takeLines(worker.pending);
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
