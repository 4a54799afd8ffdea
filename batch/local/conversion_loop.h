#pragma once

#include <cstdint>
#include <vector>

#include "batch/local/conversions.h"
#include "batch/options.h"
#include "batch/records/input_file.h"
#include "batch/report/summary.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"

namespace plenvorith {

/// Converts files with workers on this machine, and settles their results in the state.
///
/// Prints  each failure on standard error as it happens, and the progress.
LoopEnd convertFiles(const Options& options, StateHandle& state, const RunContext& context,
                     const std::vector<InputFile>& files, Summary& summary);

/// The order to convert files in: the largest first, so that none of them is begun when all others
/// are done; the usual ones as they are.
void sortForConversion(std::vector<InputFile>& files);

/// Bytes of memory that are free for further programs; a large number if the system does not tell.
std::int64_t freeMemory();

}  // namespace plenvorith
