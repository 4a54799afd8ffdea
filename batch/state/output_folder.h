#pragma once

#include <string>
#include <vector>

#include "batch/options.h"
#include "batch/records/input_file.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"
#include "batch/system/descriptor.h"

namespace plenvorith {

/// The locks that a run holds.
struct Locks {
  Descriptor output;  ///< on the output folder: for a shard together with others, else alone
  Descriptor shard;   ///< on the shard, if it is one
};

/// Takes the output folder, or the shard, for this run alone; says what is in the way.
std::string takeOutputFolder(const Options& options, const RunContext& context, Locks& locks);

/// Leaves those of the files that belong to the shard, and gives its state what is known of them.
/// Without a state, for a run that changes nothing, nothing is written. Says what is in the way.
std::string becomeShard(const Options& options, const RunContext& context, StateHandle* state,
                        std::vector<InputFile>& files);

}  // namespace plenvorith
