#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/inputs/find_files.h"
#include "batch/records/file_record.h"
#include "batch/state/ledger.h"

namespace plenvorith {

/// What a run came to.
struct Summary {
  std::int64_t files = 0;  ///< to convert in this run
  std::int64_t converted = 0;
  std::int64_t triangles = 0;
  std::int64_t convertedBefore = 0;
  std::vector<std::string> failures;  ///< one line each
  std::vector<std::string> doubtful;  ///< converted, but; one line each
  std::vector<std::string> kept;      ///< could not be tried, what was there stays; one line each
};

/// Adds a file that got a result.
void addToSummary(Summary& summary, const Settled& settled);

/// A file and what is wrong with it, in one line for a person.
std::string failureLine(const FileRecord& record);

/// What is left out, in one line: "3 files that end in .zip: a.zip, b.zip, c.zip".
std::string skippedText(const std::string& what, const Skipped& skipped);

/// The same of a file that could not be tried.
std::string keptLine(const Settled& settled);

/// Prints on standard output what a run would do and what it would leave out.
void printPlan(const Summary& summary, const FoundFiles& found);

/// Prints the summary on standard output; whether all is well.
bool printSummary(const Summary& summary, const FoundFiles& found, double seconds,
                  const std::string& stateFolder);

}  // namespace plenvorith
