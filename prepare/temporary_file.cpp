#include "prepare/temporary_file.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

namespace plenvorith {
namespace {

/// The signals by which a user, a terminal or a system ends a program.
constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXCPU};

/// The one thing in this program that no scope owns: a handler is told nothing but the number of the
/// signal, and may use nothing but memory that is there already.
std::array<char, 4096> removedPath = {};

extern "C" void removeAndEnd(int signal) {
  TemporaryFile::removeNow();
  (void)std::signal(signal, SIG_DFL);
  (void)std::raise(signal);
}

/// Where a path leads, over as many links as a system follows. There need be no file.
std::filesystem::path behindLinks(std::filesystem::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i) {
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  }
  return path;
}

/// A name that nothing has, with as much of the final one as leaves it no longer than a name may be.
std::string unusedNameBeside(const std::filesystem::path& final) {
  constexpr std::size_t kLongestStart = 200;
  const std::string start = final.filename().string().substr(0, kLongestStart) + ".tmp";
  std::random_device random;
  std::error_code error;
  std::filesystem::path path;
  do {
    path = final.parent_path() / (start + std::to_string(random()));
  } while (std::filesystem::exists(path, error));
  return path.string();
}

}  // namespace

void TemporaryFile::removeNow() {
  if (removedPath[0] != '\0') {
    (void)std::remove(removedPath.data());
  }
}

TemporaryFile::TemporaryFile(const std::string& finalPath)
    : finalPath_(behindLinks(finalPath).string()), path_(unusedNameBeside(finalPath_)) {
  if (path_.size() < removedPath.size()) {
    path_.copy(removedPath.data(), path_.size());
    removedPath[path_.size()] = '\0';
  }
  for (const int ending : kEndingSignals) {
    handlersBefore_.push_back(std::signal(ending, removeAndEnd));
    if (handlersBefore_.back() == SIG_IGN) {
      (void)std::signal(ending, SIG_IGN);
    }
  }
  // A file that grows over its limit is an error like a full disk.
  tooLargeBefore_ = std::signal(SIGXFSZ, SIG_IGN);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) {
    // There may be none.
    (void)std::remove(path_.c_str());
  }
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
    (void)std::signal(kEndingSignals[i], handlersBefore_[i]);
  }
  (void)std::signal(SIGXFSZ, tooLargeBefore_);
  removedPath[0] = '\0';
}

bool TemporaryFile::takePlace() {
  std::error_code error;
  const std::filesystem::file_status before = std::filesystem::status(finalPath_, error);
  if (std::filesystem::is_regular_file(before)) {
    std::filesystem::permissions(path_, before.permissions(), error);
  }
  std::filesystem::rename(path_, finalPath_, error);
  if (error) {
    return false;
  }
  path_.clear();
  removedPath[0] = '\0';
  return true;
}

}  // namespace plenvorith
