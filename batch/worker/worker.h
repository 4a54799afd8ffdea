#pragma once

#include "batch/records/job.h"
#include "batch/worker/child.h"

namespace plenvorith {

/// Works for a driver: reads jobs, one a line, converts each file in a copy of this process, and
/// writes the results, one a line.
///
/// Ends when the jobs end; sooner, and with it the conversion under way, on SIGHUP, SIGINT and
/// SIGTERM, and when nobody reads the results any more.
///
/// Takes   the descriptors of the jobs and of the results.
/// Gives   the exit status of the worker.
int runWorker(int jobs, int results);

/// Converts one file. `isStopped` is set if that was cut short because the worker is to end: then
/// there is no result.
JobResult convertFile(const Job& job, const WorkerSignals& signals, bool& isStopped);

}  // namespace plenvorith
