#include "batch/inputs/input_header.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "exchange/statement_reader.h"

namespace plenvorith {
namespace {

/// The strings in the parameters of an entity, each with the number of its parameter, from 0 on.
/// Two apostrophes in a string are one.
std::vector<std::pair<std::size_t, std::string>> stringsIn(std::string_view body) {
  std::vector<std::pair<std::size_t, std::string>> strings;
  std::size_t parameter = 0;
  int depth = 0;
  for (std::size_t i = 0; i < body.size(); ++i) {
    depth += body[i] == '(' ? 1 : body[i] == ')' ? -1 : 0;
    parameter += body[i] == ',' && depth == 1 ? 1U : 0U;
    if (body[i] != '\'') {
      continue;
    }
    std::string& text = strings.emplace_back(parameter, "").second;
    for (++i; i < body.size() && (body[i] != '\'' || body.substr(i).starts_with("''")); ++i) {
      i += body[i] == '\'' ? 1U : 0U;
      text += body[i];
    }
  }
  return strings;
}

}  // namespace

InputHeader headerOf(const std::string& path) {
  constexpr std::size_t kMost = std::size_t{1} << 16;
  constexpr std::size_t kTimeStamp = 1;
  constexpr std::size_t kSystem = 5;
  InputHeader header;
  StatementReader reader(path);
  while (reader.next() == Statement::HeaderEntity) {
    const bool isName = reader.headerKeyword() == "FILE_NAME";
    const bool isSchema = reader.headerKeyword() == "FILE_SCHEMA";
    for (const auto& [parameter, text] : stringsIn(reader.peek(kMost))) {
      if (isSchema) {
        header.schema += (header.schema.empty() ? "" : ", ") + text;
      } else if (isName && parameter == kTimeStamp) {
        header.timeStamp = text;
      } else if (isName && parameter == kSystem) {
        header.system = text;
      }
    }
  }
  return header;
}

}  // namespace plenvorith
