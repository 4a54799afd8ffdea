#pragma once

#include <vector>

#include "batch/local/conversions.h"
#include "batch/options.h"
#include "batch/records/input_file.h"
#include "batch/report/summary.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"

namespace plenvorith {

/// Converts files with workers on several hosts, and settles their results in the state.
///
/// The files go out in chunks. What a host that is lost had not converted goes to the others: when
/// a round is over, the hosts are asked again, and what has no result yet goes out anew, until two
/// rounds in a row bring none.
///
/// Prints  which hosts are left out, each failure as it happens, and the progress, on standard
/// error.
LoopEnd convertOnHosts(const Options& options, StateHandle& state, const RunContext& context,
                       const std::vector<InputFile>& files, Summary& summary);

}  // namespace plenvorith
