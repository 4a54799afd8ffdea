#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batch/records/file_record.h"
#include "batch/report/inspection.h"
#include "batch/state/totals.h"

namespace plenvorith {

/// What stands above the files.
struct ReportHead {
  std::string about;          ///< one line: releases, host, time, arguments
  std::string base;           ///< the folder that the names of the files begin in, with its slash
  std::vector<Total> totals;  ///< of all files, of which the page may show a part
  std::vector<std::string> notes;  ///< what the last run left out, one printable line each
};

struct ReportFile {
  FileRecord record;
  std::vector<Inspection> inspections;  ///< one for each output, in their order; or none at all
  std::string transcriptEnd;            ///< its last lines, where they tell something; any bytes
};

/// Calls a function with every file, one after the other; false if not all could be read.
using ReportFiles = std::function<bool(const std::function<void(const ReportFile&)>&)>;

/// Writes the report of a run, an HTML page that needs no other file.
///
/// Takes   the path of the page, in the output folder of the run, and its files, in the order of
///         their paths' bytes.
/// Prints  one line on standard error where the page could not be written.
/// Errors  false; what stood at the path before is still there then.
/// Cost    one file in memory at a time.
[[nodiscard]] bool writeReport(const std::string& path, const ReportHead& head,
                               const ReportFiles& files);

}  // namespace plenvorith
