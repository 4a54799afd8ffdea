#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "batch/options.h"
#include "batch/records/input_file.h"
#include "batch/report/progress.h"
#include "batch/report/summary.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"
#include "batch/system/descriptor.h"

namespace plenvorith {

/// How a run of conversions ended.
struct LoopEnd {
  int signal = 0;       ///< that interrupted it, 0 if none did
  std::string problem;  ///< why it could not go on; empty if it could
};

/// The conversions of a run, on this machine or on others: what they are told, what becomes of
/// their results, and what the user sees of it.
struct Conversions {
  const Options& options;
  StateHandle& state;
  const RunContext& context;
  const std::vector<InputFile>& files;  ///< results have an index of these as their id
  Summary& summary;
  Descriptor signals;  ///< of those that interrupt the run
  ProgressState progress;
  ProgressDisplay display;
  std::chrono::steady_clock::time_point start;
  std::vector<Finished> unsettled;  ///< results that the state does not know yet
  std::chrono::steady_clock::time_point settledAt;
  int refusals = 0;  ///< of the state, one after the other
  LoopEnd end;
};

/// What is there before the first conversion. From now on signals no longer end the process.
Conversions beginConversions(const Options& options, StateHandle& state, const RunContext& context,
                             const std::vector<InputFile>& files, Summary& summary);

/// Whether the run is to end, done or not.
bool isOver(const Conversions& conversions);

/// Notes the signal that has come, if one has.
void takeSignal(Conversions& conversions);

/// Settles what has come, and tells of failures. Many results are settled together, for each time the
/// disk is waited for; `isUrgent`: these, too, however few they are. A state that cannot be
/// written, as on a full disk, counts as a refusal, and the results stay for the next time.
///
/// Gives   what is settled now: its folders are free.
std::vector<Finished> settleResults(Conversions& conversions, bool isUrgent);

/// Ends the run because the state refuses to be written.
void giveUpOnState(Conversions& conversions);

/// Shows how far the conversions are, if it is time.
void showConversions(Conversions& conversions);

/// Shows it for the last time.
void endConversions(Conversions& conversions);

}  // namespace plenvorith
