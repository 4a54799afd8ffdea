#include "batch/local/conversion_loop.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <utility>

#include <poll.h>

#include "batch/local/pool.h"

namespace plenvorith {
namespace {

/// All that changes while files are converted.
struct Loop {
  Conversions run;
  WorkerPool pool;
  std::size_t next = 0;              ///< index of the first file that no worker has been given
  std::vector<std::size_t> again;    ///< files that their workers lost
  std::set<std::size_t> lostBefore;  ///< files that have had their second chance
};

bool hasFilesLeft(const Loop& loop) {
  return loop.next < loop.run.files.size() || !loop.again.empty();
}

/// Whether a further file may be begun now.
bool mayBegin(const Loop& loop) {
  // With nothing under way, waiting would free no memory.
  const Options& options = loop.run.options;
  return loop.run.refusals == 0 && hasFilesLeft(loop) && hasIdle(loop.pool, options.jobs) &&
         (countBusy(loop.pool) == 0 || freeMemory() >= options.memoryFree);
}

void beginFiles(Loop& loop) {
  while (mayBegin(loop)) {
    const std::size_t file = loop.again.empty() ? loop.next : loop.again.back();
    if (!giveJob(loop.pool, loop.run.files[file], file, loop.run.options.jobs)) {
      if (countBusy(loop.pool) == 0) {
        loop.run.end.problem = std::string("no worker can be started: ") + strerror(errno);
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
  std::vector<pollfd> events = {{loop.run.signals.get(), POLLIN, 0}};
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
  takeSignal(loop.run);
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
  finished.result.isTried = false;
  finished.input = loop.run.files[lost.file].path;
  finished.result.id = static_cast<std::int64_t>(lost.file);
  finished.result.reason = lost.isSilent ? "its worker did not answer" : "its worker ended twice";
  if (lost.signal != 0 && !lost.isSilent) {
    finished.result.reason += " (signal " + std::to_string(lost.signal) + ")";
    finished.result.signal = lost.signal;
  }
  loop.run.unsettled.push_back(std::move(finished));
}

/// Settles what has come, if it is time. A state that cannot be written is tried again: what is
/// under way leaves room on a full disk when it ends.
void settleAndRelease(Loop& loop) {
  const bool isAllThere = countBusy(loop.pool) == 0 && (!hasFilesLeft(loop) || !mayBegin(loop));
  for (const Finished& finished : settleResults(loop.run, isAllThere)) {
    if (!finished.outFolder.empty()) {
      release(loop.pool, finished);
    }
  }
  constexpr int kPatience = 10;
  if (loop.run.refusals > kPatience && countBusy(loop.pool) == 0) {
    giveUpOnState(loop.run);
  }
}

void noteLargest(Loop& loop) {
  ProgressState& progress = loop.run.progress;
  progress.largestBytes = -1;
  progress.largest.clear();
  for (const PoolWorker& worker : loop.pool.workers) {
    if (worker.file && loop.run.files[*worker.file].size > progress.largestBytes) {
      const InputFile& file = loop.run.files[*worker.file];
      progress.largest = nameBelow(loop.run.context.base, file.path);
      progress.largestBytes = file.size;
    }
  }
}

}  // namespace

LoopEnd convertFiles(const Options& options, StateHandle& state, const RunContext& context,
                     const std::vector<InputFile>& files, Summary& summary) {
  // A worker that has ended is noticed by the end of its results.
  std::signal(SIGPIPE, SIG_IGN);
  Loop loop{.run = beginConversions(options, state, context, files, summary),
            .pool = {context.places, context.base, options.settings, {}, {}, 0, {}},
            .again = {},
            .lostBefore = {}};
  while (!isOver(loop.run) &&
         (hasFilesLeft(loop) || countBusy(loop.pool) > 0 || !loop.run.unsettled.empty())) {
    beginFiles(loop);
    noteLargest(loop);
    showConversions(loop.run);
    PoolEvents events = collectResults(loop.pool, waitForWorkers(loop), files);
    std::ranges::move(events.finished, std::back_inserter(loop.run.unsettled));
    std::ranges::move(endSilent(loop.pool, std::chrono::steady_clock::now()),
                      std::back_inserter(events.lost));
    for (const LostFile& lost : events.lost) {
      noteLost(loop, lost);
    }
    settleAndRelease(loop);
  }
  stopPool(loop.pool);
  if (loop.run.end.problem.empty()) {
    (void)settleResults(loop.run, true);  // what has come before a signal
  }
  noteLargest(loop);
  endConversions(loop.run);
  return loop.run.end;
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
