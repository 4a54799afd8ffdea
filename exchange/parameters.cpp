#include "exchange/parameters.h"

#include <charconv>
#include <cstdint>
#include <utility>

#include "exchange/real_number.h"
#include "exchange/token_reader.h"

namespace plenvorith {
namespace {

/// More than any schema has; deeper ones are left out.
constexpr int kDeepest = 16;

Parameter readParameter(TokenReader& tokens, int depth);

/// Reads the parameters from behind "(" to behind ")"; false if something else stands there.
bool readParameters(TokenReader& tokens, int depth, std::vector<Parameter>& parameters) {
  if (tokens.take(')')) {
    return true;
  }
  do {
    parameters.push_back(readParameter(tokens, depth));
  } while (tokens.take(','));
  return tokens.take(')');
}

Parameter readParameter(TokenReader& tokens, int depth) {
  Parameter parameter;
  char c = tokens.peek();
  while (!tokens.isAtEnd() && c != ',' && c != ')' && c != '(') {
    parameter.text += tokens.next().text;
    c = tokens.peek();
  }
  if (c == '(' && depth < kDeepest) {
    (void)tokens.take('(');
    (void)readParameters(tokens, depth + 1, parameter.items);
  }
  tokens.skipParameter();  // what is left of a deep or malformed one
  return parameter;
}

}  // namespace

InstanceReader::InstanceReader(const InstanceTable& table, StatementReader& reader)
    : table_(table), reader_(reader) {}

std::vector<Record> InstanceReader::read(InstanceIndex index) {
  std::vector<Record> records;
  if (index == kNoInstance) {
    return records;
  }
  reader_.seekBody(table_.offset(index));
  TokenReader tokens(reader_);
  const bool isComplex = tokens.take('(');
  Record record;
  do {
    record = {tokens.takeKeyword(), {}};
    if (!tokens.take('(') || !readParameters(tokens, 0, record.parameters)) {
      break;
    }
    records.push_back(std::move(record));
  } while (isComplex && !tokens.isAtEnd() && tokens.peek() != ')');
  return records;
}

std::optional<Record> InstanceReader::read(InstanceIndex index, std::string_view keyword) {
  for (Record& record : read(index)) {
    if (record.keyword == keyword) {
      return std::move(record);
    }
  }
  return std::nullopt;
}

InstanceIndex InstanceReader::named(const Parameter& parameter) const {
  std::uint64_t number = 0;
  const std::string& text = parameter.text;
  const char* const end = text.data() + text.size();
  if (!text.starts_with('#') || std::from_chars(text.data() + 1, end, number).ptr != end ||
      number > kLargestNumber) {
    return kNoInstance;
  }
  return table_.find(number);
}

std::optional<double> numberOf(const Parameter& parameter) {
  const char* const end = parameter.text.data() + parameter.text.size();
  const RealNumber number = readReal(parameter.text.data(), end);
  const bool isWhole = number.end == end && number.kind != RealNumber::Kind::None;
  return isWhole && number.kind != RealNumber::Kind::Huge ? std::optional(number.value)
                                                          : std::nullopt;
}

}  // namespace plenvorith
