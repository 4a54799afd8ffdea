#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace plenvorith::test {

/// A fresh directory in which the program runs, with an empty `tmp/`, its temporary directory.
class Sandbox {
 public:
  Sandbox();
  ~Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  std::filesystem::path operator/(std::string_view name) const;
  void write(std::string_view name, std::string_view content) const;
  void makeDirectory(std::string_view name) const;
  std::string read(std::string_view name) const;

  /// Runs the program with these arguments; `command` says how. What is unset in it is filled in.
  Outcome run(const std::vector<std::string>& arguments, Command command = {}) const;

  /// Everything in the directory: path to content, or to what else it is.
  std::map<std::string, std::string> content() const;

 private:
  TempDir directory_;
};

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

/// The same for a file without geometry: releases of the kernel differ in whether they refuse it or
/// read it and find nothing, which makes a line more where `lines` has "(refused or empty)".
testing::Matcher<std::string> ownLinesWithoutGeometry(std::string_view lines);

}  // namespace plenvorith::test
