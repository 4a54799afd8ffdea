#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

#include "batch/system/descriptor.h"

namespace plenvorith {

/// The ends of a pipe. What is started gets only the one that becomes a stream of it.
struct Pipe {
  Descriptor read;
  Descriptor write;
};

/// Nothing if the system has none left.
std::optional<Pipe> makePipe();

/// What a new process gets.
struct ProcessSetup {
  int input = -1;           ///< descriptor for its standard input; -1 here and below: /dev/null
  int output = -1;          ///< for standard output
  int errors = -1;          ///< for standard error
  std::string folder = {};  ///< where it runs; empty: here
  int endSignal = SIGKILL;  ///< that it gets when the process that started it ends; 0: none
};

/// Starts a process, the leader of a group of its own: what is meant for this one, as an interruption
/// from the keyboard, does not reach it. It is a copy of this process that runs `become`; where that
/// comes back, and where it cannot be set up, it ends with 127. No signal is blocked in it.
///
/// Gives   its id; 0, with the system's number in errno, if none can be started.
pid_t startProcess(const ProcessSetup& setup, const std::function<void()>& become);

/// Turns this process into a program. Comes back only if that fails.
void becomeProgram(const std::string& path, const std::vector<std::string>& arguments);

/// The pointers to texts, and a null pointer behind them, as `main` and `exec` take them; nobody
/// changes the texts.
std::vector<char*> pointersTo(const std::vector<std::string>& texts);

}  // namespace plenvorith
