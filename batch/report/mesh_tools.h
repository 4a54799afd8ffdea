#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "batch/records/output.h"
#include "batch/report/inspection.h"

namespace plenvorith {

struct InspectionWish {
  bool checks = false;     ///< by admesh
  bool pictures = false;   ///< by f3d, on a display of Xvfb
  std::size_t atOnce = 1;  ///< tools that run at the same time
  bool isLine = false;     ///< whether the progress is one line that is drawn again and again
};

/// Inspects the STL files that have changed since they were inspected.
///
/// Takes   the output folder, with a slash at its end, a folder for the work of the tools alone, the
///         outputs, and whether to stop early.
/// Prints  the progress and, as they come, the files that a tool gave nothing for and why, on standard
///         error; how many files it has looked at in which time, on standard output.
/// Errors  false if the results could not be kept. A tool that fails, or needs more than half a
///         minute, leaves a file without its result; it is not tried again on the same file.
bool inspectOutputs(InspectionsHandle& inspections, const std::string& folder,
                    const std::string& workFolder, const std::vector<OutputRecord>& outputs,
                    const InspectionWish& wish, const std::function<bool()>& isInterrupted);

}  // namespace plenvorith
