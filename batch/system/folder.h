#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace plenvorith {

/// The rights that folders are made with, before the user's mask.
inline constexpr mode_t kFolderRights = 0777;

/// The names in a folder, in the order of their bytes; none if it cannot be read.
std::vector<std::string> namesInFolder(const std::string& path);

/// Makes a folder and those above it that are missing; whether it is there now.
[[nodiscard]] bool makeFolders(const std::string& path);

/// Removes what is in a folder, and makes it if it is missing; whether it is there and empty now.
[[nodiscard]] bool makeEmptyFolder(const std::string& path);

/// Removes a folder, or file, and all in it, as far as the system lets it.
void removeTree(const std::string& path);

/// Removes the folders on the way from `below`, which stays, to a file in it, from the inside out,
/// as far as they are empty.
void removeEmptyFolders(const std::string& below, const std::string& file);

/// What stands before the last "/", without it; empty if there is none.
std::string folderOf(const std::string& path);

/// A path made absolute, without "." and "..", without a "/" at the end; links stay as they are.
std::string absolutePath(const std::string& path);

}  // namespace plenvorith
