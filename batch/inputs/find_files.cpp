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
constexpr const char* kOutputFolders = "folders of outputs";

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

/// Whether a name ends so, in upper or lower case; the ending is in lower case.
bool endsWithLetters(const std::string& name, std::string_view ending) {
  const auto isSameLetter = [](char a, char b) {
    return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
  };
  return name.size() >= ending.size() &&
         std::equal(ending.begin(), ending.end(),
                    name.end() - static_cast<std::ptrdiff_t>(ending.size()), isSameLetter);
}

std::string belowBase(const FoundFiles& found, const std::string& path) {
  return path.substr(std::min(found.base.size(), path.size()));
}

void noteSkipped(FoundFiles& found, const std::string& what, const std::string& path) {
  constexpr std::size_t kExamples = 5;
  Skipped& skipped = found.skipped[what];
  if (++skipped.count <= static_cast<std::int64_t>(kExamples)) {
    skipped.examples.push_back(belowBase(found, path));
  }
}

void skip(Walk& walk, const std::string& what, const std::string& path) {
  noteSkipped(walk.found, what, path);
}

bool matchesAny(const Walk& walk, const std::vector<std::string>& globs, const std::string& path,
                bool isFolder) {
  return std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
    return matchesGlob(glob, belowBase(walk.found, path), isFolder);
  });
}

void addFile(Walk& walk, const std::string& path, std::int64_t size) {
  const Options& options = walk.options;
  if (matchesAny(walk, options.exclude, path, false) ||
      (!options.include.empty() && !matchesAny(walk, options.include, path, false))) {
    skip(walk, "excluded", path);
  } else {
    walk.found.files.push_back({path, size});
  }
}

void walkFolder(Walk& walk, const std::string& path, bool isInput);

void visitFolder(Walk& walk, const std::string& path, const struct stat& status, bool isLink) {
  if (matchesAny(walk, walk.options.exclude, path, true)) {
    skip(walk, "excluded", path);
  } else if (isLink && !walk.options.followLinks) {
    skip(walk, "links to folders (--follow looks into them)", path);
  } else if (std::find(walk.around.begin(), walk.around.end(), idOf(status)) != walk.around.end()) {
    skip(walk, "links to a folder around them", path);
  } else if (idOf(status) == walk.output) {
    skip(walk, kOutputFolders, path);
  } else {
    walk.around.push_back(idOf(status));
    walkFolder(walk, path, false);
    walk.around.pop_back();
  }
}

/// The ending of a name, in lower case, if it says that there may be geometry, or STEP files, in it.
std::string_view telltaleEnding(const std::string& name) {
  constexpr std::array<std::string_view, 15> kEndings = {
      ".stpz", ".stpx", ".stpxz", ".ste", ".igs", ".iges", ".zip", ".gz",
      ".bz2",  ".xz",   ".zst",   ".7z",  ".rar", ".tar",  ".tgz"};
  const auto ending = std::find_if(kEndings.begin(), kEndings.end(), [&](std::string_view one) {
    return endsWithLetters(name, one);
  });
  return ending == kEndings.end() ? std::string_view() : *ending;
}

void visitEntry(Walk& walk, int folder, const std::string& path, const dirent& entry) {
  const bool mayBeFolder =
      entry.d_type == DT_DIR || entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN;
  const bool isStep = isNamedLikeStep(entry.d_name);
  const std::string_view ending = isStep ? std::string_view() : telltaleEnding(entry.d_name);
  if (!isStep && !mayBeFolder && ending.empty()) {
    return;
  }
  struct stat itself {};
  struct stat target {};
  const bool isLink =
      fstatat(folder, entry.d_name, &itself, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(itself.st_mode);
  const bool leadsOn = fstatat(folder, entry.d_name, &target, 0) == 0;
  if (leadsOn && S_ISDIR(target.st_mode)) {
    visitFolder(walk, path, target, isLink);
  } else if (isStep && leadsOn && S_ISREG(target.st_mode)) {
    addFile(walk, path, target.st_size);
  } else if (isLink && !leadsOn) {
    skip(walk, "links that lead nowhere", path);
  } else if (!ending.empty()) {
    skip(walk, "files that end in " + std::string(ending), path);
  } else if (isStep) {
    skip(walk, "not regular files", path);
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
    skip(walk, kOutputFolders, path);
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
  const bool isStep = isNamedLikeStep(input.path);
  // One that is listed is noted when it is its turn.
  if (input.error != 0 && !(input.isListed && isStep)) {
    const bool isMissing = input.error == ENOENT || input.error == ENOTDIR;
    return isMissing ? "missing: " + input.path : input.path + ": " + systemText(input.error);
  }
  return isStep || isFolder(input) ? "" : "not named like a STEP file: " + input.path;
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

void leaveOut(FoundFiles& found, const std::string& what, const std::set<std::string>& paths) {
  for (const std::string& path : paths) {
    noteSkipped(found, what, path);
  }
  std::erase_if(found.files, [&](const InputFile& file) { return paths.contains(file.path); });
}

bool isNamedLikeStep(const std::string& name) {
  constexpr std::array<std::string_view, 3> kExtensions = {".stp", ".step", ".p21"};
  return std::any_of(kExtensions.begin(), kExtensions.end(),
                     [&](std::string_view extension) { return endsWithLetters(name, extension); });
}

std::vector<std::string> pathsInListing(const std::string& text) {
  const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> paths;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t next = std::min(text.find(end, start), text.size());
    // Lines may end as they do elsewhere: no name of a STEP file ends in CR.
    const std::size_t stop =
        end == '\n' && next > start && text[next - 1] == '\r' ? next - 1 : next;
    if (stop > start) {
      paths.push_back(text.substr(start, stop - start));
    }
    start = next + 1;
  }
  return paths;
}

bool matchesGlob(const std::string& glob, const std::string& pathBelowBase, bool isFolder) {
  std::string plain = glob;
  if (glob.ends_with('/')) {
    plain.pop_back();
  }
  const bool isOfPath = plain.find('/') != std::string::npos;
  const std::string subject =
      isOfPath ? pathBelowBase : pathBelowBase.substr(pathBelowBase.rfind('/') + 1);
  return (isFolder || plain == glob) && fnmatch(plain.c_str(), subject.c_str(), 0) == 0;
}

}  // namespace plenvorith
