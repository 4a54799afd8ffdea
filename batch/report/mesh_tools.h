#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "batch/records/output.h"
#include "batch/report/inspection.h"

namespace plenvorith {

/// An STL file that a conversion made.
struct MadeMesh {
  OutputRecord output;
  std::string input = {};  ///< the absolute path of the file that it was made of
  std::string deflection = "0.1";
  bool isPrepared = false;  ///< the input was rewritten for the converter first
  bool isWhole = true;      ///< it is that of the whole input, not of one of its shapes
  bool isChecked = true;    ///< what is found out about the input is told of this one
};

struct InspectionWish {
  bool checks = false;     ///< by plenvorith-check
  bool pictures = false;   ///< by f3d, on a display of Xvfb
  std::size_t atOnce = 1;  ///< tools that run at the same time
  bool isLine = false;     ///< whether the progress is one line that is drawn again and again
  std::chrono::seconds checkLimit = std::chrono::hours(1);  ///< for one check; 0: none
};

/// Inspects the STL files that have changed since they were inspected.
///
/// Takes   the output folder, with a slash at its end, a folder for the work of the tools alone, the
///         meshes, and whether to stop early.
/// Prints  the progress and, as they come, the files that a tool gave nothing for and why, on standard
///         error; how many files it has looked at in which time, on standard output.
/// Errors  false if the results could not be kept. A tool that fails, or needs more time than the
///         limit (half a minute to draw), leaves a file without its result; it is not tried again on
///         the same file.
bool inspectOutputs(InspectionsHandle& inspections, const std::string& folder,
                    const std::string& workFolder, const std::vector<MadeMesh>& meshes,
                    const InspectionWish& wish, const std::function<bool()>& isInterrupted);

}  // namespace plenvorith
