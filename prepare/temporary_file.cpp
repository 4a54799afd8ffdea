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
  (void)std::remove(removedPath.data());
  (void)std::signal(signal, SIG_DFL);
  (void)std::raise(signal);
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& finalPath) : finalPath_(finalPath) {
  // A link to a file stays one: what it leads to is replaced.
  std::error_code error;
  if (std::filesystem::is_symlink(finalPath, error)) {
    const std::filesystem::path target = std::filesystem::canonical(finalPath, error);
    finalPath_ = error ? finalPath : target.string();
  }
  std::random_device random;
  do {
    path_ = finalPath_ + ".tmp" + std::to_string(random());
  } while (std::filesystem::exists(path_, error));
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
  std::filesystem::rename(path_, finalPath_, error);
  if (error) {
    return false;
  }
  path_.clear();
  return true;
}

}  // namespace plenvorith
