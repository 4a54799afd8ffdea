#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/state/ledger.h"
#include "batch/state/names.h"
#include "batch/state/shard.h"
#include "batch/state/state.h"

namespace plenvorith {

/// Gives the state of a shard what is known of its files, so that it can tell what is converted and
/// remove what is not made any more.
///
/// Nothing writes the state of the output folder while there are shards; it is read without locks.
///
/// Errors  false, and `problem` says why.
bool importRecords(const std::string& database, StateHandle& shard,
                   const std::vector<InputFile>& files, std::string& problem);

/// What a merge came to.
struct Merged {
  std::int64_t shards = 0;
  std::int64_t files = 0;
  std::vector<std::string> problems;  ///< of shards that stay, one line each
};

/// Takes what the shards know into the state of the output folder, and removes their folders. A
/// shard that is still at work stays as it is.
Merged mergeShards(StateHandle& state, const Places& places);

}  // namespace plenvorith
