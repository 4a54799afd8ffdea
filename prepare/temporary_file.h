#pragma once

#include <string>
#include <vector>

namespace plenvorith {

/// A file under a name of its own beside the one that it is to become, or beside that to which a link
/// leads. While this lives, the file is removed if a signal ends the program; it is removed at the end
/// of the scope, too, unless it took its place. There can be one at a time.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& finalPath);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// A path that named nothing a moment ago.
  [[nodiscard]] const std::string& path() const {
    return path_;
  }

  /// Gives the file its final name, over a file that has it, whose mode it takes on. False if the
  /// system does not.
  [[nodiscard]] bool takePlace();

  /// Removes the file that there is, if there is one, where the program has to end at once.
  static void removeNow();

 private:
  using Handler = void (*)(int);

  std::string finalPath_;
  std::string path_;
  std::vector<Handler> handlersBefore_;  // of the signals that end the program
  Handler tooLargeBefore_ = nullptr;
};

}  // namespace plenvorith
