#include "tests/reference/reference_entity_table.h"

#include <regex>
#include <sstream>

namespace plenvorith::test {

std::size_t referenceEntityNameLength(const std::string& line) {
  static const std::regex pattern("^#\\d+=");
  std::smatch match;
  if (!std::regex_search(line, match, pattern)) {
    return 0;
  }
  return static_cast<std::size_t>(match.length()) - 1;
}

EntityTexts referenceEntityTable(const std::string& content) {
  static const std::regex pattern("^(#\\d+)=(.*)");
  EntityTexts table;
  std::string name;
  std::string text;
  std::istringstream file(content);
  std::string line;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    std::smatch match;
    if (std::regex_search(line, match, pattern)) {
      if (!name.empty()) {
        table[name] = text;
      }
      name = match[1];
      text = match[2];
    } else if (!name.empty()) {
      text += " " + line;
    }
  }
  if (!name.empty()) {
    table[name] = text;
  }
  return table;
}

}  // namespace plenvorith::test
