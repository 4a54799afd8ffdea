#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/records/job.h"
#include "batch/state/names.h"
#include "batch/state/state.h"

namespace plenvorith {

/// What all records of a run have in common.
struct RunContext {
  Places places;
  std::string base;  ///< folder that the names of the outputs begin in, with a "/" at the end
  std::string settings;
  std::string program;
  std::int64_t run = 0;
};

/// A conversion that has ended.
struct Finished {
  std::string input;
  std::string outFolder;  ///< the job's
  JobResult result;
};

/// Brings the outputs of conversions to their places and notes it all in the state.
///
/// First the state is told which files are about to appear, then they are moved, then it is told
/// that they are there: killed at any moment, it knows every file that an input may have made, and
/// takes none for whole that may not be. Outputs of an earlier conversion of the same input that
/// are not among the new ones go.
///
/// Gives   the records as they are now, in order; empty if the state could not be written before
///         anything was moved: then nothing has happened and all can be tried again.
std::vector<FileRecord> settle(StateHandle& state, const RunContext& context,
                               const std::vector<Finished>& finished);

/// Whether an input needs no conversion: converted by the same program with the same settings to
/// the same place, not changed since, outputs there in their sizes. A file that has merely been
/// touched is known by its content; its record is then changed to its new time of change, and
/// `isTouched` set.
bool isUpToDate(const RunContext& context, const std::string& input, FileRecord& record,
                bool& isTouched);

/// Removes what inputs made that are no longer there, and forgets them.
///
/// Gives   the number of inputs that were; -1 if the state could not be read or written.
std::int64_t prune(StateHandle& state, const Places& places);

/// The path of an input below the base; the whole path where it is outside.
std::string nameBelow(const std::string& base, const std::string& input);

}  // namespace plenvorith
