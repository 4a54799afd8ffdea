#include "batch/inputs/find_files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include "batch/system/folder.h"

namespace plenvorith {
namespace {

constexpr const char* kStateName = ".plenvorith-batch";

/// What tells folders apart, whatever their names.
using FolderId = std::pair<dev_t, ino_t>;

struct CloseFolder {
  void operator()(DIR* folder) const {
    closedir(folder);
  }
};

/// A walk through the folders.
struct Walk {
  const Options& options;
  FolderId output;
  FoundFiles& found;
  std::vector<FolderId> around;  ///< the folders that the walk is in
};

FolderId idOf(const struct stat& status) {
  return {status.st_dev, status.st_ino};
}

std::string systemText(int error) {
  return strerror(error);
}

std::string belowBase(const FoundFiles& found, const std::string& path) {
  return path.substr(std::min(found.base.size(), path.size()));
}

bool isExcluded(const Walk& walk, const std::string& path) {
  const auto& globs = walk.options.exclude;
  return std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
    return matchesGlob(glob, belowBase(walk.found, path));
  });
}

bool isIncluded(const Walk& walk, const std::string& path) {
  const auto& globs = walk.options.include;
  return globs.empty() || std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
           return matchesGlob(glob, belowBase(walk.found, path));
         });
}

void addFile(Walk& walk, const std::string& path, std::int64_t size) {
  if (isExcluded(walk, path) || !isIncluded(walk, path)) {
    ++walk.found.excluded;
  } else {
    walk.found.files.push_back({path, size});
  }
}

void walkFolder(Walk& walk, const std::string& path, bool isInput);

void visitFolder(Walk& walk, const std::string& path, const struct stat& status, bool isLink) {
  if (isExcluded(walk, path)) {
    ++walk.found.excluded;
  } else if (isLink && !walk.options.followLinks) {
    ++walk.found.linkedFolders;
  } else if (std::find(walk.around.begin(), walk.around.end(), idOf(status)) != walk.around.end()) {
    ++walk.found.loops;
  } else if (idOf(status) == walk.output) {
    ++walk.found.outputFolders;
  } else {
    walk.around.push_back(idOf(status));
    walkFolder(walk, path, false);
    walk.around.pop_back();
  }
}

void visitEntry(Walk& walk, int folder, const std::string& path, const dirent& entry) {
  const bool mayBeFolder =
      entry.d_type == DT_DIR || entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN;
  const bool isStep = isNamedLikeStep(entry.d_name);
  if (!isStep && !mayBeFolder) {
    return;
  }
  struct stat itself {};
  struct stat target {};
  const bool isThere = fstatat(folder, entry.d_name, &itself, AT_SYMLINK_NOFOLLOW) == 0;
  const bool leadsOn = fstatat(folder, entry.d_name, &target, 0) == 0;
  if (leadsOn && S_ISDIR(target.st_mode)) {
    visitFolder(walk, path, target, isThere && S_ISLNK(itself.st_mode));
  } else if (isStep && leadsOn && S_ISREG(target.st_mode)) {
    addFile(walk, path, target.st_size);
  } else if (isStep) {
    ++walk.found.notRegular;
  }
}

void walkFolder(Walk& walk, const std::string& path, bool isInput) {
  const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
  if (!folder) {
    const int error = errno;
    walk.found.problems.push_back("folder cannot be read: " + path + ": " + systemText(error));
    return;
  }
  struct stat status {};
  if (!isInput && fstatat(dirfd(folder.get()), kStateName, &status, 0) == 0) {
    ++walk.found.outputFolders;
    return;
  }
  errno = 0;
  while (const dirent* const entry = readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && name != kStateName) {
      visitEntry(walk, dirfd(folder.get()), path + (path.ends_with('/') ? "" : "/") + entry->d_name,
                 *entry);
    }
    errno = 0;
  }
  if (const int error = errno; error != 0) {
    walk.found.problems.push_back("folder cannot be read whole: " + path + ": " +
                                  systemText(error));
  }
}

/// The content of the file that lists inputs; nothing if it cannot be read.
std::optional<std::string> readListing(const std::string& path) {
  const auto readAll = [](std::istream& stream) {
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  if (path == "-") {
    return readAll(std::cin);
  }
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    return std::nullopt;
  }
  return readAll(file);
}

/// An input as it is given.
struct Input {
  std::string path;  ///< absolute
  struct stat status {};
  int error = 0;
  bool isListed = false;  ///< in a listing: one that is wrong does not keep others from going on
};

Input inputFrom(const std::string& given, bool isListed) {
  Input input;
  input.path = absolutePath(given);
  input.isListed = isListed;
  if (stat(input.path.c_str(), &input.status) != 0) {
    input.error = errno;
  }
  return input;
}

bool isFolder(const Input& input) {
  return input.error == 0 && S_ISDIR(input.status.st_mode);
}

/// What is wrong with an input; empty if nothing.
std::string problemOf(const Input& input) {
  if (!isFolder(input) && !isNamedLikeStep(input.path)) {
    return "not named like a STEP file: " + input.path;
  }
  // One that is listed fails when it is its turn, and is noted then.
  if (input.error != 0 && !input.isListed) {
    return input.path + ": " + systemText(input.error);
  }
  return {};
}

/// Makes `base` the deepest folder that holds both what it held and a file or folder.
void widenBase(const Input& input, std::string& base) {
  std::string folder = isFolder(input) ? input.path + '/' : input.path;
  folder = folder == "//" ? "/" : folder.substr(0, folder.rfind('/') + 1);
  if (base.empty()) {
    base = folder;
  }
  while (!folder.starts_with(base)) {
    base = base.substr(0, base.rfind('/', base.size() - 2) + 1);
  }
}

/// All inputs that are in order; what is wrong with others is noted.
std::vector<Input> collectInputs(const Options& options, FoundFiles& found) {
  std::vector<Input> inputs;
  for (const std::string& given : options.inputs) {
    inputs.push_back(inputFrom(given, false));
  }
  if (options.listing) {
    const std::optional<std::string> text = readListing(*options.listing);
    if (!text) {
      found.wrongUse = *options.listing + " cannot be read";
      return {};
    }
    for (const std::string& listed : pathsInListing(*text)) {
      inputs.push_back(inputFrom(listed, true));
    }
  }
  std::erase_if(inputs, [&](const Input& input) {
    const std::string problem = problemOf(input);
    if (!problem.empty()) {
      if (input.isListed) {
        found.problems.push_back(problem);
      } else {
        found.wrongUse = problem;
      }
    }
    return !problem.empty();
  });
  return inputs;
}

/// Sets the base, from the option or from the inputs.
void setBase(const Options& options, const std::vector<Input>& inputs, FoundFiles& found) {
  for (const Input& input : inputs) {
    widenBase(input, found.base);
  }
  if (options.base.empty()) {
    return;
  }
  std::string base = absolutePath(options.base);
  base += base.ends_with('/') ? "" : "/";
  if (!inputs.empty() && !found.base.starts_with(base)) {
    found.wrongUse = "--base " + base + " does not hold all INPUTs";
  }
  found.base = base;
}

FolderId outputIdOf(const std::string& outputFolder) {
  struct stat status {};
  return stat(outputFolder.c_str(), &status) == 0 ? idOf(status) : FolderId();
}

}  // namespace

FoundFiles findFiles(const Options& options, const std::string& outputFolder) {
  FoundFiles found;
  const std::vector<Input> inputs = collectInputs(options, found);
  setBase(options, inputs, found);
  if (!found.wrongUse.empty()) {
    return found;
  }
  Walk walk{options, outputIdOf(outputFolder), found, {}};
  for (const Input& input : inputs) {
    if (isFolder(input)) {
      walk.around = {idOf(input.status)};
      walkFolder(walk, input.path, true);
    } else {
      addFile(walk, input.path, input.error == 0 ? input.status.st_size : 0);
    }
  }
  std::sort(found.files.begin(), found.files.end(),
            [](const InputFile& a, const InputFile& b) { return a.path < b.path; });
  const auto repeated =
      std::unique(found.files.begin(), found.files.end(),
                  [](const InputFile& a, const InputFile& b) { return a.path == b.path; });
  found.files.erase(repeated, found.files.end());
  return found;
}

bool isNamedLikeStep(const std::string& name) {
  constexpr std::array<std::string_view, 3> kExtensions = {".stp", ".step", ".p21"};
  const auto isSameLetter = [](char a, char b) {
    return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
  };
  return std::any_of(kExtensions.begin(), kExtensions.end(), [&](std::string_view extension) {
    return name.size() >= extension.size() &&
           std::equal(extension.begin(), extension.end(),
                      name.end() - static_cast<std::ptrdiff_t>(extension.size()), isSameLetter);
  });
}

std::vector<std::string> pathsInListing(const std::string& text) {
  const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> paths;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t stop = std::min(text.find(end, start), text.size());
    if (stop > start) {
      paths.push_back(text.substr(start, stop - start));
    }
    start = stop + 1;
  }
  return paths;
}

bool matchesGlob(const std::string& glob, const std::string& pathBelowBase) {
  const bool isOfPath = glob.find('/') != std::string::npos;
  const std::string subject =
      isOfPath ? pathBelowBase : pathBelowBase.substr(pathBelowBase.rfind('/') + 1);
  return fnmatch(glob.c_str(), subject.c_str(), 0) == 0;
}

}  // namespace plenvorith
