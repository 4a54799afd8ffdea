#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/settings.h"

namespace plenvorith {

/// How to convert one file in a process of its own.
struct ChildSettings {
  std::string workFolder;       ///< where it runs
  std::string temporaryFolder;  ///< its TMPDIR
  int transcript = -1;          ///< descriptor for its standard output and error
  ConversionSettings settings;
  std::vector<std::string> arguments;  ///< of the converter, behind the program's name
  std::string namesPath;  ///< where the built-in converter's names of shapes go, if they are to
  std::string
      preparedPath;  ///< where the prepared input goes, if it is to be; the converter's then
};

/// How such a process ended.
struct ChildEnd {
  std::optional<int> exitStatus;
  std::optional<int> signal;
  int forkError = 0;  ///< the system's number, if no process could be started
  bool timedOut = false;
  std::string doubt;  ///< what preparing would change of the mesh that the built-in converter made
  bool isStopped = false;  ///< ended because the worker is to end
  double seconds = 0.0;
  double cpuSeconds = 0.0;
  std::int64_t peakMemory = 0;  ///< bytes
  std::int64_t leastSpace = 0;  ///< bytes that were free at least in the work folder's file system
};

/// Where a worker hears of what happens while a file is converted.
struct WorkerSignals {
  int signals = -1;  ///< a signalfd of SIGCHLD, SIGHUP, SIGINT and SIGTERM, which are blocked
  int results = -1;  ///< where results go; nobody needs the conversion once nobody reads them
};

/// Runs a conversion in a child: the built-in converter in a copy of this process, or another
/// program. Input for it is empty. What it starts belongs to its process group, which a time limit
/// and a stop end together.
ChildEnd runChild(const ChildSettings& child, const WorkerSignals& signals);

/// Bytes that are free for users in the file system of a folder; a large number if it cannot tell.
std::int64_t freeSpace(const std::string& folder);

}  // namespace plenvorith
