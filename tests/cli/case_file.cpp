#include "tests/cli/case_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {
namespace {

enum class Place { Setup, Run, Expected };
enum class Body { None, Text, Words };

struct SectionRule {
  std::string_view name;
  Place place;
  Body body;
  std::size_t fewestWords, mostWords;
};

constexpr std::string_view kUse = "<use ";

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

constexpr std::array<SectionRule, 20> kRules = {{
    {"each", Place::Setup, Body::Words, 1, kAnyNumber},
    {"file", Place::Setup, Body::Text, 1, 1},
    {"bytes", Place::Setup, Body::Words, 1, 2},
    {"step", Place::Setup, Body::Text, 1, kAnyNumber},
    {"copy", Place::Setup, Body::None, 2, 2},
    {"directory", Place::Setup, Body::None, 1, 1},
    {"link", Place::Setup, Body::None, 2, 2},
    {"mode", Place::Setup, Body::None, 2, 2},
    {"run", Place::Run, Body::None, 1, kAnyNumber},
    {"run-without-rights", Place::Run, Body::None, 1, kAnyNumber},
    {"out", Place::Expected, Body::Text, 0, 1},
    {"err", Place::Expected, Body::Text, 0, 1},
    {"status", Place::Expected, Body::None, 1, kAnyNumber},
    {"made", Place::Expected, Body::None, 1, kAnyNumber},
    {"changed", Place::Expected, Body::None, 1, kAnyNumber},
    {"removed", Place::Expected, Body::None, 1, kAnyNumber},
    {"expect-file", Place::Expected, Body::Text, 1, 1},
    {"expect-step", Place::Expected, Body::Text, 1, kAnyNumber},
    {"expect-stl", Place::Expected, Body::Words, 1, 2},
    {"check", Place::Expected, Body::Words, 0, 0},
}};

[[noreturn]] void reject(int line, const std::string& what) {
  throw std::runtime_error("line " + std::to_string(line) + ": " + what);
}

const SectionRule& ruleFor(const Section& section) {
  const auto* const rule = std::ranges::find(kRules, section.name, &SectionRule::name);
  if (rule == kRules.end()) {
    reject(section.line, "there is no section \"" + section.name + "\"");
  }
  return *rule;
}

int hexDigit(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::size_t value = kDigits.find(c);
  return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

/// The character behind a backslash at `at`, which is moved behind what stands for it.
char takeEscaped(std::string_view line, std::size_t& at, int number) {
  constexpr std::string_view kLetters = "nrt\\\"";
  constexpr std::string_view kMeanings = "\n\r\t\\\"";
  if (at < line.size() && line[at] == 'x' && at + 2 < line.size()) {
    const int high = hexDigit(line[at + 1]);
    const int low = hexDigit(line[at + 2]);
    if (high >= 0 && low >= 0) {
      at += 3;
      return static_cast<char>(high * 16 + low);
    }
  }
  const std::size_t letter = at < line.size() ? kLetters.find(line[at]) : std::string_view::npos;
  if (letter == std::string_view::npos) {
    reject(number, "a backslash in quotes is followed by n, r, t, \\, \" or x and two digits");
  }
  ++at;
  return kMeanings[letter];
}

/// The word in quotes that starts at `at`, which is moved behind it.
std::string takeQuoted(std::string_view line, std::size_t& at, int number) {
  std::string word;
  for (++at; at < line.size() && line[at] != '"';) {
    const char c = line[at++];
    word += c == '\\' ? takeEscaped(line, at, number) : c;
  }
  if (at == line.size()) {
    reject(number, "a quoted word has no end");
  }
  if (++at < line.size() && line[at] != ' ') {
    reject(number, "a quoted word is not followed by a blank");
  }
  return word;
}

std::vector<std::string> splitWords(std::string_view line, int number) {
  std::vector<std::string> words;
  for (std::size_t at = line.find_first_not_of(' '); at < line.size();
       at = line.find_first_not_of(' ', at)) {
    if (line[at] == '"') {
      words.push_back(takeQuoted(line, at, number));
      continue;
    }
    const std::size_t end = std::min(line.find(' ', at), line.size());
    words.emplace_back(line.substr(at, end - at));
    at = end;
  }
  return words;
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

Section parseHeading(std::string_view line, int number) {
  std::vector<std::string> words = splitWords(line.substr(3), number);
  if (words.empty()) {
    reject(number, "a heading without a name");
  }
  Section section{.line = number, .name = words.front()};
  section.words.assign(words.begin() + 1, words.end());
  const SectionRule& rule = ruleFor(section);
  if (section.words.size() < rule.fewestWords || section.words.size() > rule.mostWords) {
    reject(number, "a wrong number of words behind \"" + section.name + "\"");
  }
  return section;
}

/// Adds the lines of a common text, for a line "<use NAME [PLACE=TEXT...]>": each TEXT stands where
/// the common text has "{PLACE}".
void addCommonText(Section& section, std::string_view line, int number,
                   const std::filesystem::path& commonTexts) {
  if (!line.ends_with('>')) {
    reject(number, "\"<use\" without \">\"");
  }
  const std::vector<std::string> words =
      splitWords(line.substr(kUse.size(), line.size() - kUse.size() - 1), number);
  const std::filesystem::path path = commonTexts / (words.empty() ? "" : words[0] + ".txt");
  if (!std::filesystem::is_regular_file(path)) {
    reject(number, "there is no common text \"" + (words.empty() ? "" : words[0]) + "\"");
  }
  Section common{.line = number, .lines = splitLines(readFile(path))};
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::size_t equals = words[i].find('=');
    if (equals == std::string::npos ||
        !replaceIn(common, "{" + words[i].substr(0, equals) + "}", words[i].substr(equals + 1))) {
      reject(number, "the common text has no place for \"" + words[i] + "\"");
    }
  }
  std::ranges::move(common.lines, std::back_inserter(section.lines));
}

void addLine(Section& section, const std::string& line, int number,
             const std::filesystem::path& commonTexts) {
  switch (ruleFor(section).body) {
    case Body::Text:
      if (line.starts_with(kUse)) {
        addCommonText(section, line, number, commonTexts);
      } else {
        section.lines.push_back(line);
      }
      return;
    case Body::Words:
      if (std::vector<std::string> words = splitWords(line, number); !words.empty()) {
        section.rows.push_back(std::move(words));
      }
      return;
    case Body::None:
      if (!line.empty()) {
        reject(number, "nothing may stand below \"" + section.name + "\"");
      }
      return;
  }
}

std::vector<Section> parseSections(std::string_view text,
                                   const std::filesystem::path& commonTexts) {
  std::vector<Section> sections;
  bool isDescribed = false;
  int number = 0;
  for (const std::string& line : splitLines(text)) {
    ++number;
    if (line.ends_with('\r')) {
      reject(number, "lines end in a line feed alone; write others as bytes");
    }
    if (line.starts_with("== ")) {
      sections.push_back(parseHeading(line, number));
    } else if (!sections.empty()) {
      addLine(sections.back(), line, number, commonTexts);
    } else if (line.starts_with("# ")) {
      isDescribed = true;
    } else if (!line.empty()) {
      reject(number, "in front of the first section, lines begin with \"# \"");
    }
  }
  if (!isDescribed) {
    reject(1, "a case begins with lines that tell what it is about, behind \"# \"");
  }
  for (Section& section : sections) {
    while (!section.lines.empty() && section.lines.back().empty()) {
      section.lines.pop_back();
    }
  }
  return sections;
}

/// Sets the sections in order: what is there first, then each run with what is expected of it.
Case arrange(std::vector<Section> sections) {
  constexpr std::array<std::string_view, 6> kOnce = {"out",  "err",     "status",
                                                     "made", "changed", "removed"};
  Case result;
  for (Section& section : sections) {
    const Place place = ruleFor(section).place;
    if (place == Place::Run) {
      result.runs.push_back({std::move(section), {}});
    } else if (place == Place::Setup) {
      if (!result.runs.empty()) {
        reject(section.line, "\"" + section.name + "\" stands in front of the first run");
      }
      result.setup.push_back(std::move(section));
    } else {
      if (result.runs.empty()) {
        reject(section.line, "\"" + section.name + "\" stands behind a run");
      }
      std::vector<Section>& expected = result.runs.back().expected;
      if (std::ranges::count(kOnce, section.name) != 0 &&
          std::ranges::count(expected, section.name, &Section::name) != 0) {
        reject(section.line, "\"" + section.name + "\" stands there twice");
      }
      expected.push_back(std::move(section));
    }
  }
  if (result.runs.empty()) {
    reject(1, "a case without a run");
  }
  return result;
}

/// Takes the table out of the sections.
std::optional<Section> takeTable(std::vector<Section>& sections) {
  const auto table = std::ranges::find(sections, "each", &Section::name);
  if (table == sections.end()) {
    return std::nullopt;
  }
  Section taken = std::move(*table);
  sections.erase(table);
  if (const auto second = std::ranges::find(sections, "each", &Section::name);
      second != sections.end()) {
    reject(second->line, "a second table");
  }
  if (taken.rows.empty()) {
    reject(taken.line, "a table without rows");
  }
  for (const std::vector<std::string>& row : taken.rows) {
    if (row.size() != taken.words.size()) {
      reject(taken.line, "rows have as many words as the table has names");
    }
  }
  return taken;
}

bool replaceAll(std::string& text, std::string_view from, std::string_view to) {
  bool found = false;
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
    found = true;
  }
  return found;
}

std::vector<Section> withRow(std::vector<Section> sections, const Section& table,
                             const std::vector<std::string>& row) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    bool isUsed = false;
    for (Section& section : sections) {
      isUsed = replaceIn(section, "{" + table.words[i] + "}", row[i]) || isUsed;
    }
    if (!isUsed) {
      reject(table.line, "{" + table.words[i] + "} stands nowhere");
    }
  }
  return sections;
}

}  // namespace

bool replaceIn(Section& section, std::string_view from, std::string_view to) {
  bool found = false;
  const auto change = [&](std::string& text) { found = replaceAll(text, from, to) || found; };
  std::ranges::for_each(section.words, change);
  std::ranges::for_each(section.lines, change);
  for (std::vector<std::string>& row : section.rows) {
    std::ranges::for_each(row, change);
  }
  return found;
}

std::vector<Case> parseCases(std::string_view text, const std::filesystem::path& commonTexts) {
  std::vector<Section> sections = parseSections(text, commonTexts);
  const std::optional<Section> table = takeTable(sections);
  if (!table) {
    return {arrange(std::move(sections))};
  }
  std::vector<Case> cases;
  for (const std::vector<std::string>& row : table->rows) {
    cases.push_back(arrange(withRow(sections, *table, row)));
    for (const std::string& value : row) {
      cases.back().row += (cases.back().row.empty() ? "" : " ") + ('"' + value + '"');
    }
  }
  return cases;
}

}  // namespace plenvorith::test
