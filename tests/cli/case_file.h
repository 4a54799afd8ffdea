#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// A part of a case file: a heading and what stands below it.
struct Section {
  int line = 0;                                     // of the heading, counted from 1
  std::string name = {};                            // the first word of the heading
  std::vector<std::string> words = {};              // the other words of the heading
  std::vector<std::string> lines = {};              // sections of text: the lines, without ends
  std::vector<std::vector<std::string>> rows = {};  // sections of words: those of each line
};

/// One run of a program, and what has to come of it.
struct CaseRun {
  Section command;
  std::vector<Section> expected;
};

/// What a case file says, for one row of its table.
struct Case {
  std::string row;  // for messages: "", or the values of the row
  std::vector<Section> setup;
  std::vector<CaseRun> runs;
};

/// Reads a case file; CONTRIBUTING.md tells what stands in it.
///
/// Takes   the text of the file and the folder of the texts that "<use NAME>" means.
/// Gives   one case for each row of the table; one if there is none.
/// Errors  throws std::runtime_error, with the line, for whatever is not understood: a wrong case
///         must fail, never test less.
std::vector<Case> parseCases(std::string_view text, const std::filesystem::path& commonTexts);

/// Puts `to` in place of each `from` in a section; false if there is none.
bool replaceIn(Section& section, std::string_view from, std::string_view to);

}  // namespace plenvorith::test
