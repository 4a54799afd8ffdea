#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "batch/hosts/hosts.h"
#include "batch/records/input_file.h"
#include "batch/records/job.h"
#include "batch/records/settings.h"
#include "batch/state/ledger.h"
#include "batch/system/descriptor.h"
#include "batch/system/tool.h"

namespace plenvorith {

/// Workers on hosts, started by GNU parallel, which is given the numbers of chunks. What belongs to
/// chunk 7 is, in the folder of the round: 7.jobs, or with transfer 7.tar, which holds the jobs and
/// the inputs, and 7.out.tar, which comes back. What belongs to job 12 is, in that folder or in that
/// of its chunk: made/12, its outputs, and transcripts/12.
struct HostEngine {
  const RunContext& context;
  const ConversionSettings& settings;
  const std::vector<InputFile>& files;
  std::string folder;  ///< for this round alone
  bool transfer = false;
  RunningTool parallel;
  std::string pending;           ///< the beginning of a line
  OpenJobs open;                 ///< those that were given out and have no result yet
  std::set<std::string> chunks;  ///< those that have not come back, with transfer

  std::vector<std::vector<std::size_t>> division;  ///< the indexes of the files of each chunk
  std::size_t sent = 0;                            ///< so many chunks are ready for the hosts
  std::string numbers;     ///< of those, as far as GNU parallel has not been told of them
  Descriptor numbersRead;  ///< where it is told: as long as this is open, writing harms nobody
  Descriptor numbersWritten;
};

/// Starts the engine for chunks, which hold indexes of files. Says what went wrong, or nothing.
std::string startEngine(HostEngine& engine, const std::string& parallel, const HostWish& wish,
                        const std::vector<Host>& hosts,
                        const std::vector<std::vector<std::size_t>>& chunks);

/// Whether there is something left to send.
bool hasUnsent(const HostEngine& engine);

/// Prepares the next chunk and tells GNU parallel of it: hosts convert the first while others are
/// packed. Says what went wrong, or nothing.
std::string sendChunk(HostEngine& engine);

/// Takes the results that have come; `isAlive` is set to whether more may come.
std::vector<Finished> collectFromHosts(HostEngine& engine, bool& isAlive);

/// Ends the engine and what it has under way on all hosts. Gives the results that still came.
std::vector<Finished> stopEngine(HostEngine& engine);

/// The options of GNU parallel, behind its name, for a run on these hosts.
std::vector<std::string> engineOptions(const std::vector<Host>& hosts, bool transfer);

/// How long hosts that do answer may send nothing: the time for the slowest file or, as with transfer
/// all results of a chunk come together, for the slowest chunk. Nothing without a time limit.
std::optional<std::chrono::seconds> patienceForHosts(const HostEngine& engine);

}  // namespace plenvorith
