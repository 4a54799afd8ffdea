#include "exchange/parameters.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace plenvorith {
namespace {

/// More than any placement or unit has.
constexpr std::size_t kLongestBody = 4096;

/// Where the parameter, string or group that starts at `from` ends.
std::size_t endOfParameter(std::string_view text, std::size_t from) {
  std::size_t depth = 0;
  std::size_t place = from;
  for (; place < text.size(); ++place) {
    const char c = text[place];
    if (c == '\'' || c == '"') {
      place = text.find(c, place + 1);
      if (place == std::string_view::npos) {
        return text.size();
      }
    } else if (c == '(') {
      ++depth;
    } else if (c == ')' || c == ',') {
      if (depth == 0) {
        break;
      }
      depth -= c == ')' ? 1 : 0;
    }
  }
  return place;
}

}  // namespace

std::vector<std::string> splitList(std::string_view text) {
  std::vector<std::string> items;
  if (!text.starts_with('(') || !text.ends_with(')') || text == "()") {
    return items;
  }
  std::size_t place = 0;
  while (place + 1 < text.size()) {
    const std::size_t end = endOfParameter(text, place + 1);
    items.emplace_back(text.substr(place + 1, end - place - 1));
    place = end;
  }
  return items;
}

std::vector<Record> splitRecords(std::string_view body) {
  std::vector<Record> records;
  std::string_view rest = body;
  if (rest.starts_with('(') && rest.ends_with(')')) {
    rest = rest.substr(1, rest.size() - 2);
  }
  while (!rest.empty()) {
    const std::size_t open = rest.find('(');
    if (open == std::string_view::npos) {
      break;
    }
    std::size_t end = open;
    while (end < rest.size() && rest[end] != ')') {
      end = endOfParameter(rest, end + 1);
    }
    if (end >= rest.size()) {
      break;
    }
    records.push_back(
        {std::string(rest.substr(0, open)), splitList(rest.substr(open, end + 1 - open))});
    rest.remove_prefix(end + 1);
  }
  return records;
}

InstanceReader::InstanceReader(const InstanceTable& table, StatementReader& reader)
    : table_(table), reader_(reader) {}

std::vector<Record> InstanceReader::read(InstanceIndex index) {
  if (index == kNoInstance) {
    return {};
  }
  reader_.seekBody(table_.offset(index));
  const std::string_view body = reader_.peek(kLongestBody);
  return body.size() >= kLongestBody ? std::vector<Record>() : splitRecords(body);
}

std::optional<Record> InstanceReader::read(InstanceIndex index, std::string_view keyword) {
  for (Record& record : read(index)) {
    if (record.keyword == keyword) {
      return std::move(record);
    }
  }
  return std::nullopt;
}

InstanceIndex InstanceReader::named(std::string_view parameter) const {
  std::uint64_t number = 0;
  const char* const end = parameter.data() + parameter.size();
  if (!parameter.starts_with('#') ||
      std::from_chars(parameter.data() + 1, end, number).ptr != end) {
    return kNoInstance;
  }
  return table_.find(number);
}

std::optional<double> numberOf(std::string_view parameter) {
  // The library reads no plus, but would read a minus behind it.
  parameter.remove_prefix(parameter.starts_with('+') && !parameter.starts_with("+-") ? 1 : 0);
  double value = 0.0;
  const char* const end = parameter.data() + parameter.size();
  const auto [behind, error] = std::from_chars(parameter.data(), end, value);
  if (error != std::errc() || behind != end || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

}  // namespace plenvorith
