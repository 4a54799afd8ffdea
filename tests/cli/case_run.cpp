#include "tests/cli/case_run.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <exception>
#include <stdexcept>
#include <utility>

#include "tests/cli/case_checks.h"
#include "tests/cli/step_files.h"
#include "tests/cli/transcript.h"
#include "tests/support/run_program.h"
#include "tests/support/sandbox.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : " ") + word;
  }
  return text.empty() ? "(nothing)" : text;
}

std::string withLineEnds(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  return text;
}

/// The words of a section, one right behind the other; all that as often as its heading says.
std::string bytesOf(const Section& section) {
  std::string once;
  for (const std::vector<std::string>& row : section.rows) {
    for (const std::string& word : row) {
      once += word;
    }
  }
  std::string bytes;
  for (int times = section.words.size() < 2 ? 1 : std::stoi(section.words[1]); times > 0; --times) {
    bytes += once;
  }
  return bytes;
}

/// The STEP file that a section stands for: words behind the first name what it is made of.
std::string stepFileOf(const Section& section, const fs::path& root) {
  return composeStepFile(root / "tests/data", {section.words.begin() + 1, section.words.end()},
                         withLineEnds(section.lines));
}

fs::perms permissionsOf(const std::string& word) {
  if (word.size() != 3 || word.find_first_not_of("01234567") != std::string::npos) {
    throw std::runtime_error("\"" + word + "\" is no mode of three octal digits");
  }
  return static_cast<fs::perms>(std::stoi(word, nullptr, 8));
}

void setUp(const Section& section, const Sandbox& dir, const fs::path& root) {
  const std::string& name = section.words.at(0);
  if (section.name == "file") {
    dir.write(name, withLineEnds(section.lines));
  } else if (section.name == "bytes") {
    dir.write(name, bytesOf(section));
  } else if (section.name == "step") {
    dir.write(name, stepFileOf(section, root));
  } else if (section.name == "copy") {
    fs::copy_file(root / section.words[1], dir / name);
  } else if (section.name == "directory") {
    dir.makeDirectory(name);
  } else if (section.name == "link") {
    fs::create_symlink(section.words[1], dir / name);
  } else if (section.name == "mode") {
    fs::permissions(dir / name, permissionsOf(section.words[1]));
  }
  if (!fs::exists(fs::symlink_status(dir / name))) {
    throw std::runtime_error("cannot make " + name);
  }
}

/// "NAME=value" in front of a program, as in a shell.
bool setsVariable(const std::string& word) {
  const std::size_t end = std::min(word.find('='), word.size());
  return end > 0 && end < word.size() &&
         std::ranges::all_of(word.substr(0, end),
                             [](unsigned char c) { return c == '_' || std::isupper(c) != 0; });
}

/// The command of a run, its program still by name.
Command commandOf(const Section& section) {
  Command command;
  const auto program = std::ranges::find_if_not(section.words, setsVariable);
  if (program == section.words.end()) {
    throw std::runtime_error("a run without a program");
  }
  command.environment.assign(section.words.begin(), program);
  if (std::ranges::none_of(command.environment,
                           [](const std::string& word) { return word.starts_with("TMPDIR="); })) {
    command.environment.emplace_back("TMPDIR=tmp");
  }
  command.program = *program;
  command.arguments.assign(program + 1, section.words.end());
  command.withoutRights = section.name == "run-without-rights";
  return command;
}

Comparison comparisonOf(const Section& section) {
  constexpr std::array<std::pair<std::string_view, Comparison>, 4> kNames = {{
      {"own-lines", Comparison::OwnLines},
      {"has-lines", Comparison::HasLines},
      {"contains", Comparison::Contains},
      {"anything", Comparison::Anything},
  }};
  if (section.words.empty()) {
    return Comparison::Whole;
  }
  for (const auto& [name, comparison] : kNames) {
    if (name == section.words[0]) {
      if (section.lines.empty() != (comparison == Comparison::Anything)) {
        throw std::runtime_error("\"" + section.words[0] + "\" with too many lines, or too few");
      }
      return comparison;
    }
  }
  throw std::runtime_error("there is no comparison \"" + section.words[0] + "\"");
}

std::string endOf(const Outcome& outcome) {
  constexpr std::array<std::pair<int, std::string_view>, 4> kSignals = {
      {{SIGABRT, "SIGABRT"}, {SIGSEGV, "SIGSEGV"}, {SIGPIPE, "SIGPIPE"}, {SIGXFSZ, "SIGXFSZ"}}};
  if (outcome.timedOut) {
    return "(no end in time)";
  }
  for (const auto& [number, name] : kSignals) {
    if (outcome.signal == number) {
      return std::string(name);
    }
  }
  return outcome.signal == 0 ? std::to_string(outcome.exitStatus)
                             : "signal " + std::to_string(outcome.signal);
}

/// The section of that name, or an empty one.
Section expectedOf(const CaseRun& run, const std::string& name) {
  const auto section = std::ranges::find(run.expected, name, &Section::name);
  return section != run.expected.end() ? *section : Section{.line = run.command.line, .name = name};
}

/// Collects what is wrong.
class Failures {
 public:
  /// Adds what the check says is wrong, with the line of the case file; "" is nothing.
  template <typename Check>
  void add(const Section& section, Check check) {
    std::string what;
    try {
      what = check();
    } catch (const std::exception& error) {
      what = error.what();
    }
    if (!what.empty()) {
      texts_.push_back("line " + std::to_string(section.line) + ": " + section.name + ": " + what);
    }
  }
  void addStream(const CaseRun& run, const std::string& name, const std::string& stream) {
    const Section section = expectedOf(run, name);
    add(section, [&] { return differenceIn(stream, section.lines, comparisonOf(section)); });
  }
  void addPaths(const CaseRun& run, const std::string& name,
                const std::vector<std::string>& paths) {
    Section section = expectedOf(run, name);
    std::ranges::sort(section.words);
    add(section, [&] {
      return section.words == paths
                 ? ""
                 : "expected " + joined(section.words) + " and got " + joined(paths);
    });
  }
  void addEnd(const CaseRun& run, const Outcome& outcome) {
    Section section = expectedOf(run, "status");
    if (section.words.empty()) {
      section.words = {"0"};
    }
    const std::string end = endOf(outcome);
    add(section, [&] {
      return std::ranges::count(section.words, end) != 0
                 ? ""
                 : "expected " + joined(section.words) + " and got " + end;
    });
  }
  const std::vector<std::string>& texts() const {
    return texts_;
  }

 private:
  std::vector<std::string> texts_;
};

void checkFiles(const CaseRun& run, const Sandbox& dir, const CaseSetting& setting,
                Failures& failures) {
  for (const Section& section : run.expected) {
    if (section.name == "expect-file") {
      failures.add(section, [&] {
        return differenceFrom(dir, section.words[0], withLineEnds(section.lines));
      });
    } else if (section.name == "expect-step") {
      failures.add(section, [&] {
        return differenceFrom(dir, section.words[0], stepFileOf(section, setting.root));
      });
    } else if (section.name == "expect-stl") {
      failures.add(section, [&] { return differenceFromTriangles(dir, section); });
    } else if (section.name == "check") {
      for (const std::vector<std::string>& row : section.rows) {
        failures.add(section, [&] {
          const std::string what = checkFile(dir, row, setting.programs);
          return what.empty() ? "" : joined(row) + ": " + what;
        });
      }
    }
  }
}

void runAndCheck(const CaseRun& run, const Sandbox& dir, const CaseSetting& setting,
                 Failures& failures) {
  Command command = commandOf(run.command);
  const auto program = setting.programs.find(command.program);
  if (program == setting.programs.end()) {
    throw std::runtime_error("there is no program \"" + command.program + "\"");
  }
  command.program = program->second;
  command.directory = dir.path();
  const DirectoryContent before = dir.content();
  const Outcome outcome = runProgram(command);
  const Changes changes = changesBetween(before, dir.content());
  failures.addStream(run, "out", outcome.out);
  failures.addStream(run, "err", outcome.err);
  failures.addEnd(run, outcome);
  failures.addPaths(run, "made", changes.made);
  failures.addPaths(run, "changed", changes.changed);
  failures.addPaths(run, "removed", changes.removed);
  checkFiles(run, dir, setting, failures);
}

/// The case with the path of its directory where "{sandbox}" stands.
Case placedIn(const Sandbox& dir, Case testCase) {
  const auto place = [&](Section& section) {
    (void)replaceIn(section, "{sandbox}", dir.path().string());
  };
  std::ranges::for_each(testCase.setup, place);
  for (CaseRun& run : testCase.runs) {
    place(run.command);
    std::ranges::for_each(run.expected, place);
  }
  return testCase;
}

}  // namespace

fs::path commonTexts(const CaseSetting& setting) {
  return setting.root / "tests/cli/cases/common";
}

std::string missingProgram(const Case& testCase, const CaseSetting& setting) {
  for (const CaseRun& run : testCase.runs) {
    std::string name = commandOf(run.command).program;
    const auto program = setting.programs.find(name);
    if (program != setting.programs.end() && program->second.empty()) {
      return name;
    }
  }
  return "";
}

std::vector<std::string> failuresOf(const Case& testCase, const CaseSetting& setting) {
  const Sandbox dir;
  const Case placed = placedIn(dir, testCase);
  Failures failures;
  for (const Section& section : placed.setup) {
    failures.add(section, [&] {
      setUp(section, dir, setting.root);
      return "";
    });
  }
  if (!failures.texts().empty()) {
    return failures.texts();
  }
  for (const CaseRun& run : placed.runs) {
    failures.add(run.command, [&] {
      runAndCheck(run, dir, setting, failures);
      return "";
    });
  }
  return failures.texts();
}

}  // namespace plenvorith::test
