#include "tests/reference/reference_strip.h"

#include <cstddef>
#include <regex>
#include <sstream>
#include <vector>

namespace plenvorith::test {
namespace {

bool contains(const std::string& line, const std::string& word) {
  return line.find(word) != std::string::npos;
}

bool startsBlock(const std::string& line) {
  static const std::regex solid("^#\\d+=TESSELLATED_SOLID");
  static const std::regex representation("^#\\d+=TESSELLATED_SHAPE_REPRESENTATION");
  static const std::regex face("^#\\d+=COMPLEX_TRIANGULATED_FACE");
  static const std::regex coordinates("^#\\d+=COORDINATES_LIST");
  return std::regex_search(line, solid) || std::regex_search(line, representation) ||
         std::regex_search(line, face) || std::regex_search(line, coordinates);
}

bool endsBlock(std::string line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) {
    line.pop_back();
  }
  return !line.empty() && line.back() == ';';
}

}  // namespace

ReferenceStrip referenceStrip(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream file(content);
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  ReferenceStrip result;
  for (const std::string& line : lines) {
    if (contains(line, "TESSELLATED_") || contains(line, "COMPLEX_TRIANGULATED_")) {
      result.makesCopy = true;
    }
  }
  if (!result.makesCopy) {
    return result;
  }
  std::vector<bool> removed(lines.size(), false);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!startsBlock(lines[i])) {
      continue;
    }
    removed[i] = true;
    while (!endsBlock(lines[i]) && i + 1 < lines.size()) {
      ++i;
      removed[i] = true;
    }
  }
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (removed[i]) {
      ++result.removedLines;
    } else {
      result.copy += lines[i] + "\n";
    }
  }
  return result;
}

}  // namespace plenvorith::test
