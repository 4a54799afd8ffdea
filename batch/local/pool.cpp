#include "batch/local/pool.h"

#include <algorithm>
#include <utility>

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
  auto process = startWorker(pool.places.run + '/' + std::to_string(++pool.started));
  if (!process) {
    return std::nullopt;
  }
  if (unused != pool.workers.end()) {
    unused->process = std::move(*process);
    return static_cast<std::size_t>(unused - pool.workers.begin());
  }
  pool.workers.push_back({.process = std::move(*process), .file = std::nullopt});
  return pool.workers.size() - 1;
}

std::string outFolderOf(const WorkerProcess& worker) {
  return worker.folder + "/out";
}

Job jobFor(const WorkerPool& pool, const WorkerProcess& worker, const InputFile& input,
           std::size_t file) {
  Job job;
  job.id = static_cast<std::int64_t>(file);
  job.input = input.path;
  job.outFolder = outFolderOf(worker);
  job.temporaryFolder = worker.folder + "/tmp";
  job.outputName = outputNameFor(input.path, pool.settings);
  job.transcript = pool.places.state + '/' + transcriptFor(nameBelow(pool.base, input.path));
  job.settings = pool.settings;
  return job;
}

}  // namespace

bool giveJob(WorkerPool& pool, const InputFile& input, std::size_t file, int most) {
  const std::optional<std::size_t> index = findIdle(pool, most);
  if (!index) {
    return false;
  }
  PoolWorker& worker = pool.workers[*index];
  worker.file = file;
  worker.hasResult = false;
  // If the worker has ended, the end of its results tells.
  (void)writeAll(worker.process.jobs.get(),
                 lineFrom(jobFor(pool, worker.process, input, file)) + '\n');
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

int countConverting(const WorkerPool& pool) {
  return static_cast<int>(
      std::count_if(pool.workers.begin(), pool.workers.end(),
                    [](const PoolWorker& worker) { return worker.file && !worker.hasResult; }));
}

PoolEvents collectResults(WorkerPool& pool, const std::vector<std::size_t>& ready,
                          const std::vector<InputFile>& files) {
  PoolEvents events;
  for (const std::size_t index : ready) {
    PoolWorker& worker = pool.workers[index];
    bool isAlive = true;
    for (const std::string& line : receiveLines(worker.process, isAlive)) {
      std::optional<JobResult> result = resultFrom(line);
      if (result && worker.file && !worker.hasResult &&
          result->id == static_cast<std::int64_t>(*worker.file)) {
        events.finished.push_back(
            {files[*worker.file].path, outFolderOf(worker.process), std::move(*result)});
        worker.hasResult = true;
      }
    }
    if (!isAlive) {
      const int signal = buryWorker(worker.process);
      if (worker.file && !worker.hasResult) {
        events.lost.push_back({*worker.file, signal});
        worker.file.reset();
      }
    }
  }
  return events;
}

void release(WorkerPool& pool, std::size_t file) {
  for (PoolWorker& worker : pool.workers) {
    if (worker.file == file) {
      worker.file.reset();
    }
  }
}

void stopPool(WorkerPool& pool) {
  std::vector<WorkerProcess> processes;
  for (PoolWorker& worker : pool.workers) {
    if (worker.process.process != 0) {
      processes.push_back(std::move(worker.process));
    }
  }
  stopWorkers(processes);
  pool.workers.clear();
}

}  // namespace plenvorith
