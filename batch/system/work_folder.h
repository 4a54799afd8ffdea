#pragma once

#include <string>

namespace plenvorith {

/// A folder that this process alone has, and that goes, with all in it, at the end of its scope.
///
/// Its name is 64 random bits: no process, on this host or another, ever has the same, so nothing
/// that comes late for one such folder can be taken for what belongs to another.
class WorkFolder {
 public:
  WorkFolder() = default;
  /// Makes it below `parent`, which is made, too, and goes with the last of its folders.
  explicit WorkFolder(const std::string& parent);
  ~WorkFolder();
  WorkFolder(WorkFolder&& other) noexcept;
  WorkFolder& operator=(WorkFolder&& other) noexcept;
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  /// Without a "/" at its end; empty if it could not be made, for which errno says why.
  const std::string& path() const {
    return path_;
  }

 private:
  std::string path_;
};

}  // namespace plenvorith
