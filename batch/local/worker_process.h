#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "batch/system/descriptor.h"

namespace plenvorith {

/// A worker on this machine, as its driver sees it.
struct WorkerProcess {
  pid_t process = 0;
  Descriptor jobs;      ///< where it gets them
  Descriptor results;   ///< where they come from
  std::string pending;  ///< the beginning of a result
};

/// Starts this program again as a worker, in a process group of its own: what is meant for the
/// driver, as an interruption from the keyboard, does not reach it. Nothing if the system refuses.
std::optional<WorkerProcess> startWorker();

/// Takes what has come from a worker and gives the whole lines of it; `isAlive` is set to whether
/// more may come.
std::vector<std::string> receiveLines(WorkerProcess& worker, bool& isAlive);

/// Tells workers to end, with the conversions under way, and waits for it; kills those that take
/// long, and goes on without those that not even that ends soon.
void stopWorkers(std::vector<WorkerProcess>& workers);

/// Waits for a worker that has ended. Gives the signal that ended it, 0 if none did.
int buryWorker(WorkerProcess& worker);

}  // namespace plenvorith
