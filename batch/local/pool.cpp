#include "batch/local/pool.h"

#include <algorithm>
#include <csignal>
#include <iterator>
#include <utility>

#include "batch/system/folder.h"

namespace plenvorith {
namespace {

/// The index of an idle worker, a new one if there is none.
std::optional<std::size_t> findIdle(WorkerPool& pool, int most) {
  const auto idle = std::find_if(
      pool.workers.begin(), pool.workers.end(),
      [](const PoolWorker& worker) { return worker.process.process != 0 && !worker.file; });
  if (idle != pool.workers.end()) {
    return static_cast<std::size_t>(idle - pool.workers.begin());
  }
  const auto unused = std::find_if(
      pool.workers.begin(), pool.workers.end(),
      [](const PoolWorker& worker) { return worker.process.process == 0 && !worker.file; });
  if (unused == pool.workers.end() && pool.workers.size() >= static_cast<std::size_t>(most)) {
    return std::nullopt;
  }
  auto process = startWorker();
  if (!process) {
    return std::nullopt;
  }
  if (unused != pool.workers.end()) {
    unused->process = std::move(*process);
    return static_cast<std::size_t>(unused - pool.workers.begin());
  }
  pool.workers.emplace_back();
  pool.workers.back().process = std::move(*process);
  return pool.workers.size() - 1;
}

std::string takeFolder(WorkerPool& pool) {
  if (pool.freeFolders.empty()) {
    return pool.places.run + '/' + std::to_string(++pool.folders);
  }
  std::string folder = std::move(pool.freeFolders.back());
  pool.freeFolders.pop_back();
  return folder;
}

Job jobFor(const WorkerPool& pool, const std::string& folder, const InputFile& input,
           std::size_t file) {
  Job job;
  job.id = static_cast<std::int64_t>(file);
  job.input = input.path;
  job.outFolder = folder + "/out";
  job.temporaryFolder = folder + "/tmp";
  job.outputName = workNameFor(input.path, pool.settings);
  job.transcript = folder + "/transcript";
  job.settings = pool.settings;
  return job;
}

/// Kills a worker and waits for nothing: what waits for a disk ends when that answers.
void abandon(WorkerPool& pool, PoolWorker& worker) {
  kill(worker.process.process, SIGKILL);
  worker.process.jobs.close();
  worker.process.results.close();
  pool.abandoned.push_back(std::exchange(worker.process, {}));
  worker.file.reset();
}

/// The result of a worker's job in a line from it; nothing if it is none.
std::optional<Finished> finishedFrom(const WorkerPool& pool, const PoolWorker& worker,
                                     const std::string& line, const std::vector<InputFile>& files) {
  if (!worker.file) {
    return std::nullopt;
  }
  const Job job = jobFor(pool, worker.folder, files[*worker.file], *worker.file);
  std::optional<JobResult> result = resultFrom(line, {{job.id, job.outputName}});
  if (!result) {
    return std::nullopt;
  }
  return Finished{job.input, job.outFolder, job.transcript, job.outputName, std::move(*result)};
}

/// Takes the results in the lines from a worker; false if one of them is none.
bool takeResults(const WorkerPool& pool, PoolWorker& worker, const std::vector<std::string>& lines,
                 const std::vector<InputFile>& files, PoolEvents& events) {
  return std::ranges::all_of(lines, [&](const std::string& line) {
    std::optional<Finished> finished = finishedFrom(pool, worker, line, files);
    if (!finished) {
      return false;
    }
    events.finished.push_back(std::move(*finished));
    worker.file.reset();
    return true;
  });
}

}  // namespace

std::optional<std::chrono::seconds> patienceFor(const ConversionSettings& settings,
                                                const InputFile& input) {
  constexpr std::chrono::seconds kGrace(60);
  constexpr std::int64_t kBytesPerSecond = 4'000'000;
  if (settings.timeLimit.count() == 0) {
    return std::nullopt;
  }
  return settings.timeLimit + kGrace + std::chrono::seconds(input.size / kBytesPerSecond);
}

bool giveJob(WorkerPool& pool, const InputFile& input, std::size_t file, int most) {
  const std::optional<std::size_t> index = findIdle(pool, most);
  if (!index) {
    return false;
  }
  PoolWorker& worker = pool.workers[*index];
  worker.file = file;
  worker.folder = takeFolder(pool);
  worker.deadline.reset();
  if (const auto patience = patienceFor(pool.settings, input)) {
    worker.deadline = std::chrono::steady_clock::now() + *patience;
  }
  // If the worker has ended, the end of its results tells.
  (void)writeAll(worker.process.jobs.get(),
                 lineFrom(jobFor(pool, worker.folder, input, file)) + '\n');
  return true;
}

bool hasIdle(const WorkerPool& pool, int most) {
  return pool.workers.size() < static_cast<std::size_t>(most) ||
         std::any_of(pool.workers.begin(), pool.workers.end(),
                     [](const PoolWorker& worker) { return !worker.file; });
}

int countBusy(const WorkerPool& pool) {
  return static_cast<int>(
      std::count_if(pool.workers.begin(), pool.workers.end(),
                    [](const PoolWorker& worker) { return worker.file.has_value(); }));
}

PoolEvents collectResults(WorkerPool& pool, const std::vector<std::size_t>& ready,
                          const std::vector<InputFile>& files) {
  PoolEvents events;
  for (const std::size_t index : ready) {
    PoolWorker& worker = pool.workers[index];
    bool isAlive = true;
    const std::vector<std::string> lines = receiveLines(worker.process, isAlive);
    const bool isUnderstood = takeResults(pool, worker, lines, files, events);
    if (isAlive && isUnderstood) {
      continue;
    }
    const std::optional<std::size_t> file = worker.file;
    int signal = SIGKILL;
    if (isAlive) {
      abandon(pool, worker);
    } else {
      signal = buryWorker(worker.process);
      worker.file.reset();
    }
    if (file) {
      events.lost.push_back({*file, signal});
    }
  }
  return events;
}

std::vector<LostFile> endSilent(WorkerPool& pool, std::chrono::steady_clock::time_point now) {
  std::vector<LostFile> lost;
  for (PoolWorker& worker : pool.workers) {
    if (worker.file && worker.deadline && now > *worker.deadline) {
      lost.push_back({.file = *worker.file, .signal = SIGKILL, .isSilent = true});
      abandon(pool, worker);
    }
  }
  return lost;
}

void release(WorkerPool& pool, const Finished& finished) {
  pool.freeFolders.push_back(folderOf(finished.outFolder));
}

void stopPool(WorkerPool& pool) {
  std::vector<WorkerProcess> processes = std::exchange(pool.abandoned, {});
  for (PoolWorker& worker : pool.workers) {
    if (worker.process.process != 0) {
      processes.push_back(std::move(worker.process));
    }
  }
  stopWorkers(processes);
  pool.workers.clear();
}

}  // namespace plenvorith
