#include "tests/cli/case_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <sstream>
#include <stdexcept>

#include "tests/support/run_program.h"
#include "tests/support/stl_file.h"

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;
using CheckWords = std::span<const std::string>;

[[noreturn]] void rejectWords() {
  throw std::runtime_error("no check is written like that");
}

std::string existingFile(const Sandbox& dir, const std::string& name) {
  if (!fs::is_regular_file(dir / name)) {
    throw std::runtime_error(name + " is no file");
  }
  return dir.read(name);
}

/// The number that a whole word stands for.
double numberOf(const std::string& word) {
  std::size_t end = 0;
  const double number = std::stod(word, &end);
  if (end != word.size()) {
    throw std::runtime_error("\"" + word + "\" is no number");
  }
  return number;
}

bool isNumber(const std::string& word) {
  return word.find_first_not_of("+-.0123456789e") == std::string::npos;
}

std::string shown(double number) {
  std::ostringstream text;
  text.precision(12);
  text << number;
  return text.str();
}

/// A quantity of a file: "size" in bytes, "triangles", "volume", or "volume-of-first-12" and the
/// like, of that many triangles.
double measure(const Sandbox& dir, const std::string& name, const std::string& quantity) {
  const std::string file = existingFile(dir, name);
  if (quantity == "size") {
    return static_cast<double>(file.size());
  }
  std::vector<StlRecord> records = recordsOf(file);
  if (quantity == "triangles") {
    return static_cast<double>(records.size());
  }
  constexpr std::string_view kFirst = "volume-of-first-";
  if (quantity.starts_with(kFirst)) {
    const auto count = static_cast<std::size_t>(numberOf(quantity.substr(kFirst.size())));
    if (count > records.size()) {
      throw std::runtime_error("there are only " + std::to_string(records.size()) + " triangles");
    }
    records.resize(count);
  } else if (quantity != "volume") {
    rejectWords();
  }
  return volumeOf(records);
}

/// FILE QUANTITY [above|below] NUMBER, or FILE QUANTITY above|below [NUMBER times] FILE.
std::string checkQuantity(const Sandbox& dir, CheckWords words) {
  const std::string& quantity = words[1];
  const double actual = measure(dir, words[0], quantity);
  CheckWords rest = words.subspan(2);
  const bool isAbove = rest[0] == "above";
  const bool isBelow = rest[0] == "below";
  if (isAbove || isBelow) {
    rest = rest.subspan(1);
  }
  double expected = 1;
  if (rest.size() == 3 && rest[1] == "times") {
    expected = numberOf(rest[0]);
    rest = rest.subspan(2);
  }
  if (rest.size() != 1) {
    rejectWords();
  }
  expected *= isNumber(rest[0]) ? numberOf(rest[0]) : measure(dir, rest[0], quantity);
  const bool holds = isAbove ? actual > expected : isBelow ? actual < expected : actual == expected;
  return holds ? "" : "it is " + shown(actual);
}

/// FILE contains|lacks|starts TEXT
std::string checkText(const std::string& file, const std::string& relation,
                      const std::string& text) {
  if (text.empty()) {
    rejectWords();
  }
  const bool holds = relation == "contains" ? file.find(text) != std::string::npos
                     : relation == "lacks"  ? file.find(text) == std::string::npos
                                            : file.starts_with(text);
  return holds ? "" : "it does not hold";
}

/// FILE clean-step VOLUME: a STEP file without tessellation, whose exact geometry the program turns
/// into triangles that enclose the volume.
std::string checkCleanStep(const std::string& file, double volume, const fs::path& converter) {
  if (!file.starts_with("ISO-10303-21;") || file.find("TESSELLATED_") != std::string::npos ||
      file.find("TRIANGULATED_") != std::string::npos) {
    return "it is no STEP file, or one with tessellation";
  }
  const Sandbox again;
  again.write("in.step", file);
  Command command{.program = converter,
                  .arguments = {"in.step", "out.stl"},
                  .directory = again.path(),
                  .environment = {"TMPDIR=tmp"}};
  const Outcome outcome = runProgram(command);
  if (outcome.exitStatus != 0) {
    return "it cannot be converted:\n" + outcome.out + outcome.err;
  }
  const double actual = volumeOf(recordsOf(again.read("out.stl")));
  return actual == volume ? "" : "its volume is " + shown(actual);
}

}  // namespace

std::string differenceFrom(const Sandbox& dir, const std::string& name,
                           const std::string& content) {
  const std::string actual = existingFile(dir, name);
  const auto [at, other] = std::ranges::mismatch(actual, content);
  if (at == actual.end() && other == content.end()) {
    return "";
  }
  const auto line = 1 + std::count(actual.begin(), at, '\n');
  return "it differs from line " + std::to_string(line) + " on; it is\n" + actual;
}

std::string differenceFromTriangles(const Sandbox& dir, const Section& section) {
  const std::string file = existingFile(dir, section.words[0]);
  const bool isLast = section.words.size() == 2;
  if (isLast && section.words[1] != "last") {
    rejectWords();
  }
  const std::vector<StlRecord> actual = recordsOf(file);
  if (section.rows.empty() || actual.size() < section.rows.size() ||
      (!isLast && actual.size() != section.rows.size())) {
    return "it has " + std::to_string(actual.size()) + " triangles";
  }
  std::vector<StlRecord> expected = actual;
  const std::size_t first = actual.size() - section.rows.size();
  for (std::size_t i = 0; i < section.rows.size(); ++i) {
    const std::vector<std::string>& row = section.rows[i];
    if (row.size() != expected[first + i].size()) {
      throw std::runtime_error("a triangle has twelve numbers");
    }
    for (std::size_t j = 0; j < row.size(); ++j) {
      if (row[j] != "_") {
        expected[first + i][j] = static_cast<float>(numberOf(row[j]));
      }
    }
  }
  if (file == stlFile(expected)) {
    return "";
  }
  std::ostringstream text;
  text << "the file differs; its triangles are\n";
  for (std::size_t i = first; i < actual.size(); ++i) {
    for (const float number : actual[i]) {
      text << " " << number;
    }
    text << "\n";
  }
  return text.str();
}

std::string checkFile(const Sandbox& dir, const std::vector<std::string>& words,
                      const std::map<std::string, fs::path>& programs) {
  if (words.size() < 3) {
    rejectWords();
  }
  const std::string& name = words[0];
  const std::string& what = words[1];
  if (words.size() == 3 && what == "equals") {
    return existingFile(dir, name) == existingFile(dir, words[2]) ? "" : "their bytes differ";
  }
  if (words.size() == 3 && (what == "contains" || what == "lacks" || what == "starts")) {
    return checkText(existingFile(dir, name), what, words[2]);
  }
  if (words.size() == 3 && what == "clean-step") {
    return checkCleanStep(existingFile(dir, name), numberOf(words[2]), programs.at("plenvorith"));
  }
  return checkQuantity(dir, words);
}

}  // namespace plenvorith::test
