#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "batch/options.h"
#include "batch/records/input_file.h"

namespace plenvorith {

/// Files and folders of one kind that are left out.
struct Skipped {
  std::int64_t count = 0;
  std::vector<std::string> examples;  ///< the first few, below the base
};

/// What inputs and options come to.
struct FoundFiles {
  std::string wrongUse;  ///< why nothing can be begun; empty if it can
  std::string base;      ///< folder that the names of the outputs begin in, with a "/" at the end
  std::vector<InputFile> files;            ///< in the order of their bytes, each once
  std::vector<std::string> problems;       ///< what could not be looked at, one line each
  std::map<std::string, Skipped> skipped;  ///< by what they are
};

/// Finds the STEP files among and below the inputs of `options`.
///
/// Takes   the absolute path of the output folder, in which nothing is looked for; it need not be
///         there.
FoundFiles findFiles(const Options& options, const std::string& outputFolder);

/// Takes files out of what was found, and counts them as skipped.
///
/// Takes   what they are, and their paths.
void leaveOut(FoundFiles& found, const std::string& what, const std::set<std::string>& paths);

/// Whether a name ends in .stp, .step or .p21, in upper or lower case.
bool isNamedLikeStep(const std::string& name);

/// The paths in a listing: each ended by a NUL if there is one, else one a line, which LF or CR LF
/// ends; none is empty.
std::vector<std::string> pathsInListing(const std::string& text);

/// Whether a name, or a path below the base where the glob holds a "/", matches a glob. One that ends
/// in "/" is for folders, and means those without it.
bool matchesGlob(const std::string& glob, const std::string& pathBelowBase, bool isFolder);

}  // namespace plenvorith
