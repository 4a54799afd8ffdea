#pragma once

#include <string>
#include <vector>

#include "batch/options.h"
#include "batch/records/input_file.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"
#include "batch/system/descriptor.h"
#include "batch/system/work_folder.h"

namespace plenvorith {

/// What makes a process the one owner of an output folder, or of a shard of it.
struct OwnedFolder {
  Descriptor output;  ///< the lock on the output folder: of a shard with others, else alone
  Descriptor shard;   ///< the lock on the shard, if it is one
  WorkFolder run;     ///< all work in progress is below it; it goes before the locks
};

/// Takes the output folder, or the shard, for this run alone. `places.run` becomes a folder that no
/// other run has had or will have; what runs that were killed have left beside it goes. Says what is
/// in the way.
std::string takeOutputFolder(const Options& options, RunContext& context, OwnedFolder& owned);

/// Leaves those of the files that belong to the shard, and gives its state what is known of them. A
/// run that only tells what it would do needs no state. Says what is in the way.
std::string becomeShard(const Options& options, const RunContext& context, StateHandle* state,
                        std::vector<InputFile>& files);

}  // namespace plenvorith
