#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "batch/hosts/hosts.h"
#include "batch/records/input_file.h"
#include "batch/records/job.h"
#include "batch/records/settings.h"
#include "batch/state/ledger.h"
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
};

/// Prepares the chunks, which hold indexes of files, and starts the engine. Says what went wrong,
/// or nothing.
std::string startEngine(HostEngine& engine, const std::string& parallel, const HostWish& wish,
                        const std::vector<Host>& hosts,
                        const std::vector<std::vector<std::size_t>>& chunks);

/// Takes the results that have come; `isAlive` is set to whether more may come.
std::vector<Finished> collectFromHosts(HostEngine& engine, bool& isAlive);

/// Ends the engine and what it has under way on all hosts. Gives the results that still came.
std::vector<Finished> stopEngine(HostEngine& engine);

/// The options of GNU parallel, behind its name, for a run on these hosts.
std::vector<std::string> engineOptions(const std::vector<Host>& hosts, bool transfer);

}  // namespace plenvorith
