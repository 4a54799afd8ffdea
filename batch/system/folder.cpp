#include "batch/system/folder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plenvorith {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const {
    closedir(folder);
  }
};

}  // namespace

std::vector<std::string> namesInFolder(const std::string& path) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
  if (!folder) {
    return names;
  }
  while (const dirent* const entry = readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool makeFolders(const std::string& path) {
  if (mkdir(path.c_str(), kFolderRights) == 0) {
    return true;
  }
  if (errno == ENOENT) {
    const std::string above = folderOf(path);
    if (above.empty() || !makeFolders(above)) {
      return false;
    }
    if (mkdir(path.c_str(), kFolderRights) == 0) {
      return true;
    }
  }
  // There already, or made by another process between the one call and the other.
  struct stat status {};
  if (errno != EEXIST || stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) {
    return errno == EEXIST;
  }
  errno = ENOTDIR;
  return false;
}

bool makeEmptyFolder(const std::string& path) {
  if (!makeFolders(path)) {
    return false;
  }
  const std::string prefix = path + '/';
  for (const std::string& name : namesInFolder(path)) {
    removeTree(prefix + name);
  }
  return namesInFolder(path).empty();
}

void removeTree(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void removeEmptyFolders(const std::string& below, const std::string& file) {
  std::string folder = folderOf(file);
  while (folder.size() > below.size() && rmdir(folder.c_str()) == 0) {
    folder = folderOf(folder);
  }
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string absolutePath(const std::string& path) {
  std::error_code ignored;  // without a current folder the path stays as it is
  const std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
  std::string normal = absolute.lexically_normal();
  while (normal.size() > 1 && normal.ends_with('/')) {
    normal.pop_back();
  }
  return normal;
}

}  // namespace plenvorith
