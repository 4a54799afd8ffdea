#include "batch/local/pool.h"

#include <algorithm>
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
  pool.workers.push_back({.process = std::move(*process), .file = std::nullopt, .folder = {}});
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

}  // namespace

bool giveJob(WorkerPool& pool, const InputFile& input, std::size_t file, int most) {
  const std::optional<std::size_t> index = findIdle(pool, most);
  if (!index) {
    return false;
  }
  PoolWorker& worker = pool.workers[*index];
  worker.file = file;
  worker.folder = takeFolder(pool);
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
    for (const std::string& line : receiveLines(worker.process, isAlive)) {
      OpenJobs open;
      if (worker.file) {
        open[static_cast<std::int64_t>(*worker.file)] =
            workNameFor(files[*worker.file].path, pool.settings);
      }
      if (std::optional<JobResult> result = resultFrom(line, open)) {
        const Job job = jobFor(pool, worker.folder, files[*worker.file], *worker.file);
        events.finished.push_back(
            {job.input, job.outFolder, job.transcript, job.outputName, std::move(*result)});
        worker.file.reset();
      }
    }
    if (!isAlive) {
      const int signal = buryWorker(worker.process);
      if (worker.file) {
        events.lost.push_back({*worker.file, signal});
        worker.file.reset();
      }
    }
  }
  return events;
}

void release(WorkerPool& pool, const Finished& finished) {
  pool.freeFolders.push_back(folderOf(finished.outFolder));
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
