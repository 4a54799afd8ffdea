#pragma once

#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/report/summary.h"
#include "batch/state/ledger.h"
#include "batch/state/state.h"

namespace plenvorith {

/// A file that seems to hold the same bytes as another one of the run.
struct Duplicate {
  InputFile file;
  std::string original;  ///< path of the one that is converted
};

/// Takes out of the list what seems to hold the same bytes as a file in front of it. Only regular
/// files of the same length are read.
std::vector<Duplicate> takeDuplicates(std::vector<InputFile>& files);

/// Gives duplicates copies of what their originals have become in this run, marked as such.
///
/// Ends soon, and leaves the rest for the next run, if `signals` has a signal.
///
/// Gives   those that have to be converted after all: their bytes are others by now, or the original
///         was not converted.
std::vector<InputFile> settleDuplicates(StateHandle& state, const RunContext& context,
                                        const std::vector<Duplicate>& duplicates, int signals,
                                        Summary& summary);

}  // namespace plenvorith
