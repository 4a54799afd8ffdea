#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/local/worker_process.h"
#include "batch/records/input_file.h"
#include "batch/records/job.h"
#include "batch/records/settings.h"
#include "batch/state/ledger.h"
#include "batch/state/names.h"

namespace plenvorith {

/// A worker and the file that it has under way.
struct PoolWorker {
  WorkerProcess process;
  std::optional<std::size_t> file;  ///< index of the input; none if it is idle
  std::string folder;               ///< of its job
  /// When it must have answered, if it must.
  std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// The workers of this machine.
struct WorkerPool {
  Places places;
  std::string base;
  ConversionSettings settings;
  std::vector<PoolWorker> workers;
  std::vector<std::string> freeFolders;  ///< for jobs, whose outputs have been taken
  int folders = 0;                       ///< so many so far; no two have the same name
  std::vector<WorkerProcess> abandoned;  ///< killed, but not waited for
};

/// A file that got no result: its worker has ended.
struct LostFile {
  std::size_t file = 0;
  int signal = 0;         ///< that ended the worker, 0 if none did
  bool isSilent = false;  ///< the worker was killed because it did not answer
};

/// What has come from the workers.
struct PoolEvents {
  std::vector<Finished> finished;
  std::vector<LostFile> lost;
};

/// How long a worker may take for a file: behind the time limit comes what it does by itself, which
/// for large files on a slow disk takes a while. Nothing without a limit.
std::optional<std::chrono::seconds> patienceFor(const ConversionSettings& settings,
                                                const InputFile& input);

/// Gives a file to an idle worker, which is started if there are fewer than `most`. False if there
/// is none, or if the system lets none start.
bool giveJob(WorkerPool& pool, const InputFile& input, std::size_t file, int most);

/// Whether a worker is idle or can be started.
bool hasIdle(const WorkerPool& pool, int most);

/// The number of workers that are not idle.
int countBusy(const WorkerPool& pool);

/// Takes what has come from the workers with these indexes. A job's folder is not used again until
/// `release`: its worker goes on in another one meanwhile. A worker that sends anything but the
/// result of its job is killed: it would be waited for in vain.
PoolEvents collectResults(WorkerPool& pool, const std::vector<std::size_t>& ready,
                          const std::vector<InputFile>& files);

/// Kills the workers that should have answered by `now` and have not, and gives their files. Workers
/// mind the time limit themselves; one that is stopped, or waits for a disk, cannot.
std::vector<LostFile> endSilent(WorkerPool& pool, std::chrono::steady_clock::time_point now);

/// Gives back the folder of a job whose outputs have been taken.
void release(WorkerPool& pool, const Finished& finished);

/// Ends all workers, and what they have under way.
void stopPool(WorkerPool& pool);

}  // namespace plenvorith
