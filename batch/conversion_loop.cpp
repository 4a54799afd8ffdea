#include "batch/conversion_loop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <fstream>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "batch/descriptor.h"
#include "batch/pool.h"
#include "batch/progress.h"

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

/// A result that the state does not know yet, and the worker that waits for it to be settled.
struct Unsettled {
  std::optional<std::size_t> worker;
  Finished finished;
};

/// All that changes while files are converted.
struct Loop {
  const Options& options;
  StateHandle& state;
  const RunContext& context;
  const std::vector<InputFile>& files;
  Summary& summary;
  WorkerPool pool;
  Descriptor signals;
  ProgressState progress;
  ProgressDisplay display;
  Clock::time_point start = Clock::now();
  std::size_t next = 0;              ///< index of the first file that no worker has been given
  std::vector<std::size_t> again;    ///< files that their workers lost
  std::set<std::size_t> lostBefore;  ///< files that have had their second chance
  std::vector<Unsettled> unsettled;
  int refusals = 0;  ///< of the state, one after the other
  LoopEnd end;
};

Descriptor listenToSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    sigaddset(&signals, signal);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool hasFilesLeft(const Loop& loop) {
  return loop.next < loop.files.size() || !loop.again.empty();
}

/// Whether a further file may be begun now.
bool mayBegin(const Loop& loop) {
  // With nothing under way, waiting would free no memory.
  return loop.refusals == 0 && hasFilesLeft(loop) && hasIdle(loop.pool, loop.options.jobs) &&
         (countBusy(loop.pool) == 0 || freeMemory() >= loop.options.memoryFree);
}

void beginFiles(Loop& loop) {
  while (mayBegin(loop)) {
    const std::size_t file = loop.again.empty() ? loop.next : loop.again.back();
    if (!giveJob(loop.pool, loop.files[file], file, loop.options.jobs)) {
      if (countBusy(loop.pool) == 0) {
        loop.end.problem = "no worker can be started";
      }
      return;
    }
    if (loop.again.empty()) {
      ++loop.next;
    } else {
      loop.again.pop_back();
    }
  }
}

/// Waits until a worker has a result, a signal comes or the progress is to be shown; gives the
/// workers that have something.
std::vector<std::size_t> waitForWorkers(Loop& loop) {
  std::vector<pollfd> events = {{loop.signals.get(), POLLIN, 0}};
  std::vector<std::size_t> workers;
  for (std::size_t i = 0; i < loop.pool.workers.size(); ++i) {
    if (loop.pool.workers[i].process.process != 0) {
      events.push_back({loop.pool.workers[i].process.results.get(), POLLIN, 0});
      workers.push_back(i);
    }
  }
  constexpr int kLook = 200;  // milliseconds
  std::vector<std::size_t> ready;
  if (poll(events.data(), events.size(), kLook) <= 0) {
    return ready;
  }
  signalfd_siginfo info{};
  if (read(loop.signals.get(), &info, sizeof info) == sizeof info) {
    loop.end.signal = static_cast<int>(info.ssi_signo);
  }
  for (std::size_t i = 0; i < workers.size(); ++i) {
    if (events[i + 1].revents != 0) {
      ready.push_back(workers[i]);
    }
  }
  return ready;
}

/// A file whose worker ended is tried once more: it may have been the worker's fault, or chance.
void noteLost(Loop& loop, const LostFile& lost) {
  if (loop.lostBefore.insert(lost.file).second) {
    loop.again.push_back(lost.file);
    return;
  }
  Finished finished;
  finished.input = loop.files[lost.file].path;
  finished.result.id = static_cast<std::int64_t>(lost.file);
  finished.result.reason = "its worker ended twice";
  if (lost.signal != 0) {
    finished.result.reason += " (signal " + std::to_string(lost.signal) + ")";
    finished.result.signal = lost.signal;
  }
  loop.unsettled.push_back({std::nullopt, std::move(finished)});
}

void noteSettled(Loop& loop, const FileRecord& record, const Unsettled& settled) {
  addToSummary(loop.summary, record);
  ++loop.progress.done;
  loop.progress.doneBytes += loop.files[static_cast<std::size_t>(settled.finished.result.id)].size;
  if (record.status != FileStatus::Converted) {
    ++loop.progress.failed;
    showMessage(loop.display, "failed: " + failureLine(record));
  }
  if (settled.worker) {
    release(loop.pool, *settled.worker);
  }
}

/// Settles what has come. A state that cannot be written, as on a full disk, is tried again: what
/// is under way leaves room when it ends.
void settleResults(Loop& loop) {
  if (loop.unsettled.empty()) {
    return;
  }
  std::vector<Finished> finished;
  for (const Unsettled& one : loop.unsettled) {
    finished.push_back(one.finished);
  }
  const std::vector<FileRecord> records = settle(loop.state, loop.context, finished);
  if (records.empty()) {
    constexpr int kPatience = 10;
    const auto waiting = std::count_if(loop.unsettled.begin(), loop.unsettled.end(),
                                       [](const Unsettled& one) { return one.worker.has_value(); });
    if (++loop.refusals > kPatience && countBusy(loop.pool) == waiting) {
      loop.end.problem = "the state cannot be written: " + stateProblem(loop.state);
    }
    return;
  }
  loop.refusals = 0;
  for (std::size_t i = 0; i < records.size(); ++i) {
    noteSettled(loop, records[i], loop.unsettled[i]);
  }
  loop.unsettled.clear();
}

void updateProgress(Loop& loop) {
  loop.progress.seconds = std::chrono::duration<double>(Clock::now() - loop.start).count();
  loop.progress.largestBytes = -1;
  loop.progress.largest.clear();
  for (const PoolWorker& worker : loop.pool.workers) {
    if (worker.file && loop.files[*worker.file].size > loop.progress.largestBytes) {
      const InputFile& file = loop.files[*worker.file];
      loop.progress.largest = nameBelow(loop.context.base, file.path);
      loop.progress.largestBytes = file.size;
    }
  }
}

Loop makeLoop(const Options& options, StateHandle& state, const RunContext& context,
              const std::vector<InputFile>& files, Summary& summary) {
  Loop loop{.options = options,
            .state = state,
            .context = context,
            .files = files,
            .summary = summary,
            .pool = {context.places, context.base, options.settings, {}, 0},
            .signals = listenToSignals(),
            .progress = {},
            .display = {},
            .again = {},
            .lostBefore = {},
            .unsettled = {},
            .end = {}};
  loop.display.isLine = options.bar || isatty(STDERR_FILENO) == 1;
  loop.progress.files = static_cast<std::int64_t>(files.size());
  for (const InputFile& file : files) {
    loop.progress.bytes += file.size;
  }
  return loop;
}

}  // namespace

LoopEnd convertFiles(const Options& options, StateHandle& state, const RunContext& context,
                     const std::vector<InputFile>& files, Summary& summary) {
  // A worker that has ended is noticed by the end of its results.
  std::signal(SIGPIPE, SIG_IGN);
  Loop loop = makeLoop(options, state, context, files, summary);
  while (loop.end.signal == 0 && loop.end.problem.empty() &&
         (hasFilesLeft(loop) || countBusy(loop.pool) > 0 || !loop.unsettled.empty())) {
    beginFiles(loop);
    PoolEvents events = collectResults(loop.pool, waitForWorkers(loop), files);
    for (auto& [worker, finished] : events.finished) {
      loop.unsettled.push_back({worker, std::move(finished)});
    }
    for (const LostFile& lost : events.lost) {
      noteLost(loop, lost);
    }
    settleResults(loop);
    updateProgress(loop);
    showProgress(loop.display, loop.progress);
  }
  stopPool(loop.pool);
  updateProgress(loop);
  endProgress(loop.display, loop.progress);
  return loop.end;
}

void sortForConversion(std::vector<InputFile>& files) {
  constexpr std::int64_t kLarge = std::int64_t{16} << 20;
  const auto weight = [](const InputFile& file) { return file.size < kLarge ? 0 : file.size; };
  std::ranges::stable_sort(files, std::ranges::greater(), weight);
}

std::int64_t freeMemory() {
  std::ifstream file("/proc/meminfo");
  std::string name;
  std::int64_t kilobytes = 0;
  std::string unit;
  while (file >> name >> kilobytes) {
    if (name == "MemAvailable:") {
      return kilobytes * 1024;
    }
    std::getline(file, unit);
  }
  return std::numeric_limits<std::int64_t>::max();
}

}  // namespace plenvorith
