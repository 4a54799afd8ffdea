#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/outcome.h"
#include "batch/records/settings.h"

namespace plenvorith {

/// One file to convert, as a driver asks a worker for it. All paths are absolute.
struct Job {
  std::int64_t id = 0;  ///< the driver's, given back with the result
  std::string input;
  std::string outFolder;        ///< for the outputs of this job alone, until they are taken
  std::string temporaryFolder;  ///< emptied for each job: those of one worker may share it
  std::string outputName;       ///< of the file that the converter is asked for
  std::string transcript;       ///< where standard output and error go; its folder is made
  bool names = false;  ///< whether to leave the names of the exact shapes in the temporary folder
  ConversionSettings settings;

  bool operator==(const Job&) const = default;
};

/// What a worker says of a job. The outputs are names in the job's folder; none if it is not
/// converted.
struct JobResult : Outcome {
  std::int64_t id = 0;
  bool isConverted = false;
  /// Whether the file is the reason: not where it could not be read, or where there was no room.
  bool isTried = true;
  std::int64_t started = 0;  ///< when the conversion began, nanoseconds since 1970

  bool operator==(const JobResult&) const = default;
};

/// The file in the temporary folder of a job that holds the names.
extern const char* const kNamesFile;

/// The name of an exact shape, whose number is that in the names of split outputs.
struct ShapeName {
  std::size_t number = 0;
  std::vector<std::string> path;  ///< of the products that it is used in, from the root down
  std::string name;
};

/// A job, and its result, as one line of ASCII without its end. Bytes of no known encoding go
/// through, each as the character of its number.
std::string lineFrom(const Job& job);
std::string lineFrom(const JobResult& result);

/// All names as one line, in the same form.
std::string lineFrom(const std::vector<ShapeName>& names);

/// The other way; nothing for a line that is none.
std::optional<Job> jobFrom(const std::string& line);

/// The jobs that are out: the name of the output that each was asked for, by its id.
using OpenJobs = std::map<std::int64_t, std::string>;

/// The result in a line that has come over a pipe or from a host, which may say anything. This is
/// the only place where it is checked.
///
/// Gives   nothing for a line that is no result, that has an id of no open job, or that names an
///         output which is no plain name beginning with that of its job, or that with ".stl" in the
///         place of ".stp"; values of the wrong kind or size count as missing.
std::optional<JobResult> resultFrom(const std::string& line, const OpenJobs& open);

}  // namespace plenvorith
