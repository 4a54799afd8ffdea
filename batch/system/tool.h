#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

#include "batch/system/descriptor.h"

namespace plenvorith {

/// The path of a program of the system, looked up in PATH; empty if there is none.
std::string findTool(const std::string& name);

struct ToolResult {
  bool succeeded = false;                       ///< ended by itself, with exit status 0
  std::string ending = "it cannot be started";  ///< how it ended, if it has not succeeded
  std::string output;                           ///< what it wrote to standard output
};

/// What becomes of the standard error of a program.
enum class ToolErrors {
  Dropped,
  InOutput,  ///< mixed with its standard output
  Shared,    ///< goes where that of this process goes
};

/// How to start a program. It is ended by a signal when the process that started it ends.
struct ToolStart {
  std::vector<std::string> arguments = {};  ///< the first is its path
  /// In addition to that of this process, as in "NAME=value".
  std::vector<std::string> environment = {};
  std::string folder = {};  ///< where it runs; empty: here
  ToolErrors errors = ToolErrors::Dropped;
  int endSignal = SIGKILL;
  int input = -1;  ///< descriptor that it reads from; -1: nothing
};

/// A program that was started and has to be waited for.
struct RunningTool {
  pid_t process = 0;    ///< leader of a process group of its own; 0: it could not be started
  Descriptor output;    ///< where its standard output can be read
  std::string written;  ///< what was read so far
  std::chrono::steady_clock::time_point end;  ///< when its time is over
  std::size_t number = 0;                     ///< for the caller
};

RunningTool startTool(const ToolStart& start, std::chrono::milliseconds limit);

/// Ends a program and all that it started, and waits for it.
void endTool(RunningTool& tool);

/// Runs one program for at most `limit`.
ToolResult runTool(const ToolStart& start, std::chrono::milliseconds limit);

/// Runs `count` programs, at most `atOnce` at a time, each for at most `limit`.
///
/// Takes   a function that tells how to start the program with a number, and one that is told of
///         each result as it comes, in any order. The second gives false to end all that still run;
///         nothing is told of those.
void runTools(std::size_t count, std::size_t atOnce, std::chrono::milliseconds limit,
              const std::function<ToolStart(std::size_t)>& startOf,
              const std::function<bool(std::size_t, const ToolResult&)>& take);

}  // namespace plenvorith
