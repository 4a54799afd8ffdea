#include "batch/state/own_outputs.h"

#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "batch/state/state.h"
#include "batch/system/folder.h"

namespace plenvorith {
namespace {

/// The path of a folder without links, with a "/" at the end; empty if there is no such folder.
std::string realFolder(const std::string& path) {
  std::error_code error;
  const std::string real = std::filesystem::canonical(path + '/', error).string();
  return error || real.ends_with('/') ? real : real + '/';
}

}  // namespace

std::set<std::string> findOwnOutputs(const Places& places, const std::vector<InputFile>& files) {
  const std::string output = realFolder(places.output);
  if (output.empty() || access(places.database.c_str(), F_OK) != 0) {
    return {};
  }
  std::string problem;  // whoever opens it for good tells
  const State state = openState(places.database, problem, StateUse::Look);
  if (!state) {
    return {};
  }
  std::set<std::string> own;
  std::string folder;
  std::string real;
  for (const InputFile& file : files) {
    if (folderOf(file.path) != folder || real.empty()) {  // files of one folder come together
      folder = folderOf(file.path);
      real = realFolder(folder);
    }
    if (real.starts_with(output) &&
        !ownerOf(*state, real.substr(output.size()) + file.path.substr(folder.size() + 1))
             .empty()) {
      own.insert(file.path);
    }
  }
  return own;
}

}  // namespace plenvorith
