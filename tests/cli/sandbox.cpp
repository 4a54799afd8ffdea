#include "tests/cli/sandbox.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;

/// How the lines begin that the program itself prints on standard output.
constexpr std::array<std::string_view, 20> kOwnBeginnings = {
    "Reading: ",
    "[1] ",
    "[2] ",
    "[3] ",
    "[4] ",
    "[5] ",
    "[PREPROCESS] ",
    "  Parsed ",
    "  Status: ",
    "  Paired tess representations: ",
    "  Unique tess representations: ",
    "  Unique tess faces to parse: ",
    "  BRep: ",
    "  Solids: ",
    "  Read ",
    "  No BRep geometry found",
    "  Saved",
    "Saved",
    "Done",
    "Failed",
};

std::string keepOwnLines(const std::string& text) {
  std::string kept;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    const std::string_view line = std::string_view(text).substr(begin, end - begin);
    if (std::ranges::any_of(kOwnBeginnings,
                            [&](std::string_view own) { return line.starts_with(own); })) {
      kept += line;
    }
    begin = end;
  }
  return kept;
}

std::string contentOf(const fs::directory_entry& entry) {
  if (entry.is_symlink()) {
    return "link to " + fs::read_symlink(entry.path()).string();
  }
  if (entry.is_directory()) {
    return "directory";
  }
  return entry.is_regular_file() ? readFile(entry.path()) : "no regular file";
}

}  // namespace

Sandbox::Sandbox() {
  makeDirectory("tmp");
  // A run without root's rights has to be able to write.
  fs::permissions(directory_.path(), fs::perms::all);
  fs::permissions(*this / "tmp", fs::perms::all);
}

Sandbox::~Sandbox() {
  // Only now can what is in it be deleted, whatever the test has forbidden.
  std::error_code ignored;
  fs::permissions(*this / "tmp", fs::perms::all, ignored);
}

fs::path Sandbox::operator/(std::string_view name) const {
  return directory_.path() / name;
}

void Sandbox::write(std::string_view name, std::string_view content) const {
  writeFile(*this / name, content);
}

void Sandbox::makeDirectory(std::string_view name) const {
  fs::create_directory(*this / name);
}

std::string Sandbox::read(std::string_view name) const {
  return readFile(*this / name);
}

Outcome Sandbox::run(const std::vector<std::string>& arguments, Command command) const {
  command.program = PLENVORITH_PROGRAM;
  command.arguments = arguments;
  command.directory = directory_.path();
  if (command.environment.empty()) {
    command.environment = {"TMPDIR=tmp"};
  }
  return runProgram(command);
}

std::map<std::string, std::string> Sandbox::content() const {
  std::map<std::string, std::string> content;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory_.path())) {
    content[entry.path().lexically_relative(directory_.path())] = contentOf(entry);
  }
  return content;
}

void expectRun(const Sandbox& sandbox, const std::vector<std::string>& arguments,
               const Expected& expected, const Command& command) {
  SCOPED_TRACE(testing::PrintToString(arguments));
  const std::map<std::string, std::string> before = sandbox.content();
  const Outcome outcome = sandbox.run(arguments, command);
  const std::map<std::string, std::string> after = sandbox.content();

  EXPECT_THAT(outcome.out, expected.out);
  EXPECT_THAT(outcome.err, expected.err);
  EXPECT_EQ(outcome.exitStatus, expected.exitStatus);
  EXPECT_EQ(outcome.signal, expected.signal);
  EXPECT_FALSE(outcome.timedOut);

  std::vector<std::string> made;
  std::vector<std::string> overwritten;
  for (const auto& [path, content] : after) {
    const auto old = before.find(path);
    if (old == before.end()) {
      made.push_back(path);
    } else if (old->second != content) {
      overwritten.push_back(path);
    }
  }
  EXPECT_EQ(made, expected.made);
  EXPECT_EQ(overwritten, expected.overwritten);
  for (const auto& [path, content] : before) {
    EXPECT_TRUE(after.contains(path)) << path << " has vanished";
  }
}

testing::Matcher<std::string> ownLines(std::string_view lines) {
  return testing::ResultOf("the program's own lines", keepOwnLines,
                           testing::Eq(std::string(lines)));
}

testing::Matcher<std::string> ownLinesWithoutGeometry(std::string_view lines) {
  constexpr std::string_view kPlace = "(refused or empty)\n";
  const std::size_t place = lines.find(kPlace);
  const std::string before(lines.substr(0, place));
  const std::string behind(lines.substr(place + kPlace.size()));
  return testing::AnyOf(ownLines(before + behind),
                        ownLines(before + "  BRep: roots=0, shapes=0\n" + behind));
}

}  // namespace plenvorith::test
