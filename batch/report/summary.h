#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "batch/inputs/find_files.h"
#include "batch/records/file_record.h"
#include "batch/state/ledger.h"

namespace plenvorith {

/// A file that something was said of.
struct Example {
  std::string name;
  std::string reason;
  std::string lastLine;
};

/// Files with reasons of one kind.
struct Told {
  std::int64_t count = 0;
  std::string title;  ///< the whole reason as long as all have the same, else what they begin with
  std::vector<Example> examples;  ///< the first few
};

/// What was said of files, by the beginning of the reason.
using ToldFiles = std::map<std::string, Told, std::less<>>;

/// What a run came to.
struct Summary {
  std::int64_t files = 0;  ///< to convert in this run
  std::int64_t converted = 0;
  std::int64_t triangles = 0;
  std::int64_t duplicates = 0;  ///< of the converted ones, copies of the outputs of others
  std::int64_t convertedBefore = 0;
  /// The number of files that have been converted in another way and are converted again, by what
  /// was different then: the settings or the program.
  std::map<std::string, std::int64_t> otherwiseBefore;
  ToldFiles failures;
  ToldFiles doubtful;        ///< converted, but
  ToldFiles kept;            ///< could not be tried, and what was there before stays
  std::int64_t removed = 0;  ///< outputs that went because their conversions now fail
};

/// How many files something was said of.
std::int64_t countOf(const ToldFiles& files);

/// Adds a file that got a result.
void addToSummary(Summary& summary, const Settled& settled);

/// A file and what is wrong with it, in one line for a person.
std::string failureLine(const FileRecord& record);

/// The same of a file that could not be tried.
std::string keptLine(const Settled& settled);

/// How many outputs went because the conversion of a file now fails.
std::string removedLine(const Settled& settled);

/// What is left out, in one line: "3 files that end in .zip: a.zip, b.zip, c.zip".
std::string skippedText(const std::string& what, const Skipped& skipped);

/// What was not looked at and what is left out, a printable line each.
std::string leftOutText(const FoundFiles& found);

/// Prints on standard output what a run would do and what it would leave out.
void printPlan(const Summary& summary, const FoundFiles& found);

/// Prints the summary on standard output; whether all is well.
bool printSummary(const Summary& summary, const FoundFiles& found, double seconds,
                  const std::string& stateFolder);

}  // namespace plenvorith
