#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/run_program.h"
#include "tests/support/sandbox.h"

namespace plenvorith::test {

/// Runs the program with these arguments; `command` says how. What is unset in it is filled in.
Outcome runIn(const Sandbox& sandbox, const std::vector<std::string>& arguments,
              Command command = {});

/// The exit status of a program that a signal ends.
constexpr int kNoExitStatus = -1;

/// What a run does. A text stands for itself.
struct Expected {
  testing::Matcher<std::string> out = "";
  testing::Matcher<std::string> err = "";
  int exitStatus = 0;
  int signal = 0;
  std::vector<std::string> made = {};         // paths that were not there before, in text order
  std::vector<std::string> overwritten = {};  // paths whose content changes, likewise
};

/// Runs the program and checks all that can be seen of it: both streams, how it ends, and that it
/// made and changed the files named and no others. Nothing may vanish.
void expectRun(const Sandbox& sandbox, const std::vector<std::string>& arguments,
               const Expected& expected, const Command& command = {});

/// Compares the program's own lines only: the kernel reports its doings on standard output too.
testing::Matcher<std::string> ownLines(std::string_view lines);

}  // namespace plenvorith::test
