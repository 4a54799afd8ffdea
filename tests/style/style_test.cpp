#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;
using testing::ElementsAre;
using testing::IsEmpty;

/// What a room may include besides its own headers and the standard library.
struct Room {
  std::set<std::string> uses;  ///< rooms, or single headers
  bool mayUseKernel = false;
  bool mayUseSystem = false;  ///< the operating system, and other libraries
};

/// A room is a folder; the files of one that stands in another belong to the inner one alone.
const std::map<std::string, Room> kRooms = {
    {"common", {}},
    {"steptext", {{"common"}}},
    {"output", {{"common"}}},
    {"exchange", {{"common"}}},
    {"product", {{"common", "exchange"}}},
    {"prepare", {{"common", "exchange", "product"}}},
    {"tessellation", {{"common", "steptext/entity_table.h"}}},
    {"brep", {{"common"}, true}},
    {"app", {{"common", "steptext", "tessellation", "brep", "output"}, true}},
    {"check", {{"common", "steptext", "tessellation", "brep"}, false, true}},
    {"batch/system", {{}, false, true}},
    {"batch/records", {{}, false, true}},
    {"batch/inputs",
     {{"batch/options.h", "batch/records", "batch/system", "exchange"}, false, true}},
    {"batch/worker",
     {{"batch/inputs", "batch/records", "batch/system", "app", "brep/part_facts.h",
       "brep/part_names.h", "common", "prepare"},
      false,
      true}},
    {"batch/state",
     {{"batch/inputs", "batch/options.h", "batch/records", "batch/system", "batch/version.h"},
      false,
      true}},
    {"batch/report",
     {{"batch/inputs", "batch/options.h", "batch/records", "batch/state", "batch/system", "common"},
      false,
      true}},
    {"batch/local",
     {{"batch/options.h", "batch/records", "batch/report", "batch/state", "batch/system"},
      false,
      true}},
    {"batch/hosts",
     {{"batch/local", "batch/options.h", "batch/records", "batch/report", "batch/state",
       "batch/system", "batch/version.h", "common"},
      false,
      true}},
    {"batch",
     {{"batch/hosts", "batch/inputs", "batch/local", "batch/records", "batch/report", "batch/state",
       "batch/system", "batch/worker", "brep/kernel_release.h", "common"},
      false,
      true}},
};

/// The innermost room that a path from the root of the project lies in; empty if it lies in none.
std::string roomOf(const std::string& path) {
  std::filesystem::path folder = std::filesystem::path(path).parent_path();
  while (!folder.empty() && kRooms.count(folder) == 0) {
    folder = folder.parent_path();
  }
  return folder;
}

struct SourceFile {
  std::string room;
  std::string path;  ///< from the root of the project
  std::string code;  ///< without comments
};

/// Where the string or character ends that begins at `start`; `start` if it does not end in its line,
/// or if its apostrophe stands between digits.
std::size_t endOfLiteral(const std::string& text, std::size_t start) {
  const bool isInNumber = text[start] == '\'' && start > 0 &&
                          std::isalnum(static_cast<unsigned char>(text[start - 1])) != 0;
  for (std::size_t i = start + 1; !isInNumber && i < text.size() && text[i] != '\n'; ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == text[start]) {
      return i + 1;
    }
  }
  return start;
}

/// Calls `use` with each piece of code, in order, and whether it is a string or character; leaves out
/// comments.
template <typename Use>
void forEachPiece(const std::string& text, Use use) {
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t start = i;
    if (text[i] == '/' && text.compare(i, 2, "//") == 0) {
      i = std::min(text.find('\n', i), text.size());
      continue;
    }
    if (text[i] == '"' || text[i] == '\'') {
      i = endOfLiteral(text, i);
    }
    const bool isLiteral = i > start;
    i = isLiteral ? i : std::min(text.find_first_of("\"'/", i + 1), text.size());
    use(std::string_view(text).substr(start, i - start), isLiteral);
  }
}

std::string withoutComments(const std::string& text) {
  std::string code;
  forEachPiece(text, [&code](std::string_view piece, bool) { code += piece; });
  return code;
}

/// Leaves out strings and characters.
std::string withoutLiterals(const std::string& text) {
  std::string code;
  forEachPiece(text, [&code](std::string_view piece, bool isLiteral) {
    code += isLiteral ? std::string_view() : piece;
  });
  return code;
}

const std::vector<SourceFile>& productFiles() {
  static const std::vector<SourceFile> files = [] {
    const std::filesystem::path root = PLENVORITH_SOURCE_DIR;
    std::vector<SourceFile> found;
    for (const auto& [room, rules] : kRooms) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(root / room)) {
        const std::string extension = entry.path().extension();
        const std::string path = std::filesystem::relative(entry.path(), root);
        if ((extension == ".h" || extension == ".cpp") && roomOf(path) == room) {
          found.push_back({room, path, withoutComments(readFile(entry.path()))});
        }
      }
    }
    return found;
  }();
  return files;
}

bool contains(const std::string& text, const std::regex& pattern) {
  return std::regex_search(text, pattern);
}

/// The headers that a file includes, with their quotation marks or angle brackets.
std::vector<std::string> includesOf(const SourceFile& file) {
  static const std::regex directive(R"re(#\s*include\s*(\S+))re");
  std::vector<std::string> includes;
  for (std::sregex_iterator match(file.code.begin(), file.code.end(), directive), end; match != end;
       ++match) {
    includes.push_back((*match)[1]);
  }
  return includes;
}

bool isOurs(const std::string& include) {
  return include.front() == '"';
}

bool isStandard(const std::string& include) {
  static const std::regex standard("<[a-z_]+>");
  return std::regex_match(include, standard);
}

/// The kernel's headers are the only ones with this ending.
bool isOfKernel(const std::string& include) {
  return include.ends_with(".hxx>");
}

/// 1 own header, 2 standard library, 3 other libraries, 4 our own.
int groupOf(const SourceFile& file, const std::string& include) {
  std::string own = file.path.substr(0, file.path.rfind('.'));
  if (include == '"' + own + ".h\"") {
    return 1;
  }
  if (isOurs(include)) {
    return 4;
  }
  return isStandard(include) ? 2 : 3;
}

/// The paths of the files whose code, without strings, matches.
std::vector<std::string> filesWith(const std::string& pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> paths;
  for (const SourceFile& file : productFiles()) {
    if (contains(withoutLiterals(file.code), expression)) {
      paths.push_back(file.path);
    }
  }
  return paths;
}

TEST(Style, FindsTheRoomsItLooksAt) {
  std::map<std::string, int> counts;
  for (const SourceFile& file : productFiles()) {
    ++counts[file.room];
  }
  EXPECT_EQ(counts.size(), kRooms.size());
}

TEST(Style, SourcesAreInRoomsOnly) {
  const std::set<std::string> others = {"tests", "bench", "fuzz", "samples", "build"};
  for (const auto& entry : std::filesystem::directory_iterator(PLENVORITH_SOURCE_DIR)) {
    const std::string name = entry.path().filename();
    if (!entry.is_directory() || name.front() == '.' || kRooms.count(name) == 1 ||
        others.count(name) == 1) {
      continue;
    }
    for (const auto& file : std::filesystem::recursive_directory_iterator(entry)) {
      EXPECT_NE(file.path().extension(), ".cpp") << file.path();
    }
  }
}

/// The files below a folder of the project with this ending, by their paths from that folder.
std::vector<std::string> filesBelow(const std::string& folder, const std::string& ending) {
  const std::filesystem::path root = std::filesystem::path(PLENVORITH_SOURCE_DIR) / folder;
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    std::string path = std::filesystem::relative(entry.path(), root);
    if (path.ends_with(ending)) {
      paths.push_back(std::move(path));
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string fileOf(const std::string& path) {
  return readFile(std::filesystem::path(PLENVORITH_SOURCE_DIR) / path);
}

TEST(Style, EverySourceOfTheTestsIsInTheListOfSomeProgram) {
  std::istringstream words(
      std::regex_replace(fileOf("tests/CMakeLists.txt"), std::regex("[()]"), " "));
  const std::set<std::string> listed{std::istream_iterator<std::string>(words), {}};
  for (const std::string& path : filesBelow("tests", ".cpp")) {
    if (path.starts_with("cmake/")) {
      continue;  // projects of their own
    }
    EXPECT_EQ(listed.count(path), 1U) << path;
  }
}

TEST(Style, EveryScriptOfTestsIsInTheList) {
  const std::string list = fileOf("tests/CMakeLists.txt");
  for (const std::string& path : filesBelow("tests", "_test.sh")) {
    EXPECT_TRUE(contains(list, std::regex("plenvorith_script_test\\([A-Za-z]+ " + path + "\\s")))
        << path;
  }
}

// As cmake/PlenvorithTest.cmake looks for them.
TEST(Style, EveryCaseOfAScriptLooksLikeOne) {
  static const std::regex line(R"re((^|\n)[ \t]*(function[ \t]+)?[A-Z]\w*[ \t]*\(\).*)re");
  static const std::regex found(R"re((^|\n)[A-Z][A-Za-z0-9]*\(\) \{)re");
  for (const std::string& path : filesBelow("tests", "_test.sh")) {
    const std::string script = fileOf("tests/" + path);
    int cases = 0;
    for (std::sregex_iterator match(script.begin(), script.end(), line), end; match != end;
         ++match) {
      EXPECT_TRUE(std::regex_match(match->str(), found)) << path << ": " << match->str();
      ++cases;
    }
    EXPECT_GT(cases, 0) << path;
  }
}

// Those of whole programs are found where they lie, shared texts by their names.
TEST(Style, EveryCaseOfAProgramIsRunAndEverySharedTextIsUsed) {
  std::string cases;
  for (const std::string& path : filesBelow("tests/cli/cases", "")) {
    if (!path.starts_with("common")) {
      EXPECT_TRUE(std::regex_match(path, std::regex("[a-z0-9_]+\\.txt"))) << path;
    }
    if (path.ends_with(".txt")) {
      cases += fileOf("tests/cli/cases/" + path);
    }
  }
  for (const std::string& path : filesBelow("tests/cli/cases/common", ".txt")) {
    EXPECT_TRUE(contains(cases, std::regex("<use " + path.substr(0, path.size() - 4) + "[ >]")))
        << path;
  }
}

TEST(Style, RoomsIncludeOnlyWhatTheyMay) {
  for (const SourceFile& file : productFiles()) {
    const Room& rules = kRooms.at(file.room);
    for (const std::string& include : includesOf(file)) {
      if (!isOurs(include)) {
        continue;
      }
      const std::string header = include.substr(1, include.size() - 2);
      const std::string room = roomOf(header);
      EXPECT_TRUE(room == file.room || rules.uses.count(room) == 1 || rules.uses.count(header) == 1)
          << file.path << " includes " << header;
    }
  }
}

TEST(Style, RoomsAreTheInnermostFolders) {
  EXPECT_EQ(roomOf("batch/state/ledger.h"), "batch/state");
  EXPECT_EQ(roomOf("batch/driver.h"), "batch");
  EXPECT_EQ(roomOf("main.cpp"), "");
}

TEST(Style, OwnHeadersAreIncludedByTheirPathFromTheRoot) {
  for (const SourceFile& file : productFiles()) {
    for (const std::string& include : includesOf(file)) {
      if (isOurs(include)) {
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::path(PLENVORITH_SOURCE_DIR) /
                                                     include.substr(1, include.size() - 2)))
            << file.path << " includes " << include;
      }
    }
  }
}

TEST(Style, OnlyRoomsOfTheKernelIncludeMoreThanTheStandardLibrary) {
  for (const SourceFile& file : productFiles()) {
    for (const std::string& include : includesOf(file)) {
      // The places that ask the operating system or the processor for something of their own.
      const bool isException =
          (file.path == "common/reserve.cpp" &&
           (include == "<sys/mman.h>" || include == "<unistd.h>")) ||
          (file.path.starts_with("tessellation/digit_") && include == "<emmintrin.h>") ||
          (file.path == "prepare/progress.cpp" && include == "<unistd.h>");
      EXPECT_TRUE(isOurs(include) || isStandard(include) || isException ||
                  kRooms.at(file.room).mayUseKernel ||
                  (kRooms.at(file.room).mayUseSystem && !isOfKernel(include)))
          << file.path << " includes " << include;
    }
  }
}

TEST(Style, IncludesStandInTheirOrder) {
  for (const SourceFile& file : productFiles()) {
    std::vector<int> groups;
    for (const std::string& include : includesOf(file)) {
      groups.push_back(groupOf(file, include));
    }
    EXPECT_TRUE(std::is_sorted(groups.begin(), groups.end())) << file.path;
  }
}

TEST(Style, HeadersBeginWithPragmaOnce) {
  for (const SourceFile& file : productFiles()) {
    if (file.path.ends_with(".h")) {
      const std::size_t start = file.code.find_first_not_of(" \n");
      ASSERT_NE(start, std::string::npos) << file.path;
      EXPECT_TRUE(std::string_view(file.code).substr(start).starts_with("#pragma once\n"))
          << file.path;
    }
  }
}

TEST(Style, NothingCatchesExceptions) {
  EXPECT_THAT(filesWith(R"re(\b(try|catch)\b)re"), IsEmpty());
  // The library for arguments reports what is wrong with them by exceptions only; its own macro
  // turns them into a number, in one place.
  EXPECT_THAT(filesWith("CLI11_PARSE"), ElementsAre("batch/options.cpp"));
}

TEST(Style, NothingUsesRegularExpressions) {
  EXPECT_THAT(filesWith(R"re(\bregex\b|<regex>|regcomp)re"), IsEmpty());
}

TEST(Style, NothingSetsALocale) {
  EXPECT_THAT(filesWith(R"re(\b(setlocale|uselocale|imbue)\b|std::locale)re"), IsEmpty());
}

TEST(Style, NothingPrintsButThroughTheStandardStreams) {
  EXPECT_THAT(filesWith(R"re(\b(printf|fprintf|puts|fputs|putchar|perror|clog|wcout|wcerr)\b)re"),
              IsEmpty());
}

TEST(Style, NothingUsesCStyleLineEndsToFlush) {
  EXPECT_THAT(filesWith(R"re(\bstd::(flush|unitbuf|ends)\b)re"), IsEmpty());
}

/// The statements that begin with a standard stream, up to their semicolons; strings are emptied
/// of semicolons first. A stream that is handed on or asked for its state prints nothing.
std::vector<std::string> printsOf(const SourceFile& file) {
  static const std::regex print(
      R"re(std::c(out|err)\b(?!\s*[),.])(?:"(?:\\.|[^"\\\n])*"|[^;"])*;)re");
  std::vector<std::string> prints;
  for (std::sregex_iterator match(file.code.begin(), file.code.end(), print), end; match != end;
       ++match) {
    prints.push_back(match->str());
  }
  return prints;
}

TEST(Style, EveryPrintEndsItsLineWithEndl) {
  static const std::regex stream(R"re(std::c(out|err)\b(?!\s*[),.]))re");
  static const std::regex endl(R"re(<<\s*std::endl\s*;$)re");
  for (const SourceFile& file : productFiles()) {
    if (file.path == "prepare/progress.cpp") {
      continue;  // writes a line on a terminal over and over
    }
    const std::string code = withoutLiterals(file.code);
    const std::vector<std::string> prints = printsOf(file);
    EXPECT_EQ(prints.size(),
              static_cast<std::size_t>(std::distance(
                  std::sregex_iterator(code.begin(), code.end(), stream), std::sregex_iterator())))
        << file.path;
    for (const std::string& print : prints) {
      EXPECT_TRUE(contains(print, endl)) << file.path << ": " << print;
      EXPECT_EQ(print.find("\\n"), std::string::npos) << file.path << ": " << print;
    }
  }
}

}  // namespace
}  // namespace plenvorith
