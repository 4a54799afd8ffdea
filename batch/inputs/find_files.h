#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "batch/options.h"
#include "batch/records/input_file.h"

namespace plenvorith {

/// What inputs and options come to.
struct FoundFiles {
  std::string wrongUse;  ///< why nothing can be begun; empty if it can
  std::string base;      ///< folder that the names of the outputs begin in, with a "/" at the end
  std::vector<InputFile> files;       ///< in the order of their bytes, each once
  std::vector<std::string> problems;  ///< what could not be looked at, one line each
  std::int64_t linkedFolders = 0;     ///< links to folders that were not followed
  std::int64_t loops = 0;             ///< links that lead to a folder around them
  std::int64_t notRegular = 0;        ///< named like STEP files, but devices, pipes, dead links
  std::int64_t outputFolders = 0;     ///< folders of this and other runs
  std::int64_t excluded = 0;          ///< files and folders that the globs leave out
};

/// Finds the STEP files among and below the inputs of `options`.
///
/// Takes   the absolute path of the output folder, in which nothing is looked for; it need not be
///         there.
FoundFiles findFiles(const Options& options, const std::string& outputFolder);

/// Whether a name ends in .stp, .step or .p21, in upper or lower case.
bool isNamedLikeStep(const std::string& name);

/// The paths in a listing: each ended by a NUL if there is one, else one a line; none is empty.
std::vector<std::string> pathsInListing(const std::string& text);

/// Whether a name, or a path below the base where the glob holds a "/", matches a glob.
bool matchesGlob(const std::string& glob, const std::string& pathBelowBase);

}  // namespace plenvorith
