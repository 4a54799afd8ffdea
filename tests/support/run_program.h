#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace plenvorith::test {

struct ResourceLimit {
  __rlimit_resource_t resource;  // RLIMIT_...
  rlim_t value;                  // soft and hard
};

struct Command {
  std::string program = {};
  std::vector<std::string> arguments = {};
  std::filesystem::path directory = {};       // where it runs
  std::vector<std::string> environment = {};  // "NAME=value"; see runProgram
  std::vector<ResourceLimit> limits = {};
  int ignoredSignal = 0;       // 0: none
  bool withoutRights = false;  // gives up root's rights; no change for other users
  std::chrono::minutes timeLimit{2};
};

struct Outcome {
  std::string out, err;
  int exitStatus = -1;  // -1 if a signal ended the program
  int signal = 0;       // 0 if it ended by itself
  bool timedOut = false;
  std::int64_t peakMemory = 0;  // bytes that were resident at most; the caller's at least
};

/// Runs a program to its end; standard input is empty.
///
/// Takes   the command; of the caller's environment the program sees only the options of the
///         sanitizers.
/// Errors  throws std::runtime_error where the system does not let a program start. A program that
///         takes longer than its time limit is killed. Can be called from several threads at once.
Outcome runProgram(const Command& command);

}  // namespace plenvorith::test
