#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/records/file_record.h"
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
  std::string extension = "stl";  ///< of the outputs
};

/// A conversion that has ended.
struct Finished {
  std::string input;
  std::string outFolder;   ///< the job's
  std::string transcript;  ///< the job's file; it goes when it is taken
  std::string outputName;  ///< that the converter was asked for
  JobResult result;
  std::string sameAs = {};  ///< path of the input that was converted in its place, if one was
};

/// What has become of an input.
struct Settled {
  FileRecord record;     ///< as it is now
  bool isKept = false;   ///< it could not be tried, and what was there before stays
  std::string obstacle;  ///< why it could not
  /// The number of outputs of an earlier conversion that went because this one failed.
  std::int64_t removed = 0;
};

/// Brings the outputs of conversions to their places and notes it all in the state.
///
/// First the state is told which files are about to appear, then they are moved, then it is told
/// that they are there: killed at any moment, it knows every file that an input may have made, and
/// takes none for whole that may not be. What the outputs hold, and their names, are on the disk
/// before the state says that they are there, so that a power cut leaves nothing else behind.
/// Outputs of an earlier conversion of the same input that are not among the new ones go; they
/// stay where the file could not be tried, as on a disk that is not mounted.
///
/// Gives   what became of them, in order; empty if the state could not be written before anything
///         was moved: then nothing has happened and all can be tried again.
std::vector<Settled> settle(StateHandle& state, const RunContext& context,
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

/// What keeps a run from converting these files: one of them would replace the output of another
/// input, as where two folders are converted into the same one. Empty if nothing does. Inputs below
/// one base never get in each other's way.
std::string findCollision(StateHandle& state, const RunContext& context,
                          const std::vector<InputFile>& files);

/// The path of an input below the base; the whole path where it is outside.
std::string nameBelow(const std::string& base, const std::string& input);

}  // namespace plenvorith
