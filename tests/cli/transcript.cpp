#include "tests/cli/transcript.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace plenvorith::test {
namespace {

using Lines = std::span<const std::string>;

constexpr std::string_view kNumber = "<number>";
constexpr std::string_view kPerhaps = "<perhaps>";

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

bool matchesLine(std::string_view line, std::string_view pattern) {
  const std::size_t mark = pattern.find(kNumber);
  if (mark == std::string_view::npos) {
    return line == pattern;
  }
  if (line.substr(0, mark) != pattern.substr(0, mark)) {
    return false;
  }
  const std::size_t end = std::min(line.find_first_not_of("0123456789", mark), line.size());
  return end > mark && matchesLine(line.substr(end), pattern.substr(mark + kNumber.size()));
}

bool matchesLines(Lines lines, Lines expected) {
  if (expected.empty()) {
    return lines.empty();
  }
  const std::string_view pattern = expected.front();
  if (pattern.starts_with(kPerhaps)) {
    return matchesLines(lines, expected.subspan(1)) ||
           (!lines.empty() && matchesLine(lines.front(), pattern.substr(kPerhaps.size())) &&
            matchesLines(lines.subspan(1), expected.subspan(1)));
  }
  return !lines.empty() && matchesLine(lines.front(), pattern) &&
         matchesLines(lines.subspan(1), expected.subspan(1));
}

bool hasLines(Lines lines, Lines expected) {
  for (std::size_t i = 0; i + expected.size() <= lines.size(); ++i) {
    if (matchesLines(lines.subspan(i, expected.size()), expected)) {
      return true;
    }
  }
  return false;
}

bool containsEach(const std::string& stream, Lines expected) {
  return std::ranges::all_of(
      expected, [&](const std::string& text) { return stream.find(text) != std::string::npos; });
}

std::string shown(Lines lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += "    | " + line + "\n";
  }
  return text.empty() ? "    (nothing)\n" : text;
}

}  // namespace

std::string keepOwnLines(std::string_view text) {
  std::string kept;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    const std::string_view line = text.substr(begin, end - begin);
    if (std::ranges::any_of(kOwnBeginnings,
                            [&](std::string_view own) { return line.starts_with(own); })) {
      kept += line;
    }
    begin = end;
  }
  return kept;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
      lines.push_back(std::string(text) + "<no line end>");
      break;
    }
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::string differenceIn(const std::string& stream, const std::vector<std::string>& expected,
                         Comparison comparison) {
  const std::vector<std::string> lines =
      linesOf(comparison == Comparison::OwnLines ? keepOwnLines(stream) : stream);
  const bool isRight = comparison == Comparison::Anything ||
                       (comparison == Comparison::HasLines && hasLines(lines, expected)) ||
                       (comparison == Comparison::Contains && containsEach(stream, expected)) ||
                       matchesLines(lines, expected);
  if (isRight) {
    return "";
  }
  return "expected\n" + shown(expected) + "  and got\n" + shown(lines);
}

}  // namespace plenvorith::test
