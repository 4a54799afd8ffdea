#include "tests/reference/reference_instances.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <stdexcept>

#include "tests/reference/reference_statements.h"

namespace plenvorith::test {
namespace {

struct Parser {
  std::string_view text;
  std::size_t pos = 0;
  ExchangeInstances instances{};
};

[[noreturn]] void fail(const Parser& parser, const std::string& what) {
  throw std::runtime_error(what + " at byte " + std::to_string(parser.pos));
}

char peek(const Parser& parser) {
  return parser.pos < parser.text.size() ? parser.text[parser.pos] : '\0';
}

bool startsWith(const Parser& parser, std::string_view word) {
  return parser.text.substr(parser.pos, word.size()) == word;
}

void skipBlanks(Parser& parser) {
  for (;;) {
    while (parser.pos < parser.text.size() &&
           static_cast<unsigned char>(parser.text[parser.pos]) <= ' ') {
      ++parser.pos;
    }
    if (!startsWith(parser, "/*")) {
      return;
    }
    const std::size_t end = parser.text.find("*/", parser.pos + 2);
    if (end == std::string_view::npos) {
      fail(parser, "comment never ends");
    }
    parser.pos = end + 2;
  }
}

void expect(Parser& parser, char c) {
  skipBlanks(parser);
  if (peek(parser) != c) {
    fail(parser, std::string("no ") + c);
  }
  ++parser.pos;
}

bool consume(Parser& parser, char c) {
  skipBlanks(parser);
  if (peek(parser) != c) {
    return false;
  }
  ++parser.pos;
  return true;
}

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '+' ||
         c == '.' || c == '!';
}

std::string readWord(Parser& parser) {
  const std::size_t start = parser.pos;
  while (isWordCharacter(peek(parser))) {
    ++parser.pos;
  }
  if (parser.pos == start) {
    fail(parser, "no word");
  }
  return std::string(parser.text.substr(start, parser.pos - start));
}

std::string readName(Parser& parser) {
  expect(parser, '#');
  std::string digits = readWord(parser);
  digits.erase(0, digits.find_first_not_of('0'));
  return "#" + digits;
}

std::string readQuoted(Parser& parser, char quote) {
  std::string content;
  for (++parser.pos; parser.pos < parser.text.size(); ++parser.pos) {
    const char c = parser.text[parser.pos];
    if (c == quote) {
      if (parser.pos + 1 == parser.text.size() || parser.text[parser.pos + 1] != quote) {
        ++parser.pos;
        return content;
      }
      ++parser.pos;
    }
    const std::string_view next = parser.text.substr(parser.pos + 1);
    if (c == '\n' && beginsStatement(next)) {
      fail(parser, "string goes over an instance");
    }
    if (quote == '"' && std::isxdigit(static_cast<unsigned char>(c)) == 0) {
      fail(parser, "no binary");
    }
    if (c != '\n' && c != '\r') {
      content += c;
    }
  }
  fail(parser, "string never ends");
}

Parameters readParameters(Parser& parser);

Parameter readParameter(Parser& parser) {
  skipBlanks(parser);
  switch (peek(parser)) {
    case '#':
      return {Parameter::Kind::Reference, readName(parser), {}};
    case '\'':
    case '"':
      return {Parameter::Kind::String, readQuoted(parser, peek(parser)), {}};
    case '$':
      ++parser.pos;
      return {Parameter::Kind::Omitted, "$", {}};
    case '*':
      ++parser.pos;
      return {Parameter::Kind::Derived, "*", {}};
    case '(':
      return {Parameter::Kind::List, "", readParameters(parser)};
    default:
      break;
  }
  const std::string word = readWord(parser);
  skipBlanks(parser);
  if (peek(parser) == '(') {
    return {Parameter::Kind::Typed, word, readParameters(parser)};
  }
  return {Parameter::Kind::Text, word, {}};
}

Parameters readParameters(Parser& parser) {
  expect(parser, '(');
  Parameters parameters;
  if (consume(parser, ')')) {
    return parameters;
  }
  do {
    parameters.push_back(readParameter(parser));
  } while (consume(parser, ','));
  expect(parser, ')');
  return parameters;
}

void readInstance(Parser& parser) {
  const std::string name = readName(parser);
  expect(parser, '=');
  skipBlanks(parser);
  if (startsWith(parser, "&SCOPE")) {
    parser.pos += 6;
    for (skipBlanks(parser); peek(parser) == '#'; skipBlanks(parser)) {
      readInstance(parser);
    }
    if (readWord(parser) != "ENDSCOPE") {
      fail(parser, "scope never ends");
    }
    skipBlanks(parser);
    if (peek(parser) == '/') {
      parser.pos = parser.text.find('/', parser.pos + 1) + 1;
    }
    skipBlanks(parser);
  }
  ExchangeInstance instance;
  instance.isComplex = consume(parser, '(');
  do {
    skipBlanks(parser);
    const std::string type = readWord(parser);
    instance.records[type] = readParameters(parser);
  } while (instance.isComplex && !consume(parser, ')'));
  expect(parser, ';');
  const auto [place, isNew] = parser.instances.try_emplace(name, instance);
  if (!isNew && isTessellated(place->second)) {
    place->second = instance;
  }
}

/// Skips a line of the header or a keyword, up to its semicolon, and gives how it begins.
std::string skipStatement(Parser& parser) {
  std::string word = readWord(parser);
  for (skipBlanks(parser); peek(parser) != ';'; skipBlanks(parser)) {
    if (parser.pos == parser.text.size()) {
      fail(parser, "statement never ends");
    }
    if (peek(parser) == '\'' || peek(parser) == '"') {
      (void)readQuoted(parser, peek(parser));
    } else {
      ++parser.pos;
    }
  }
  ++parser.pos;
  return word;
}

}  // namespace

ExchangeInstances parseInstances(std::string_view text) {
  Parser parser{text, text.find("ISO-10303-21;")};
  if (parser.pos == std::string_view::npos) {
    throw std::runtime_error("no exchange structure");
  }
  for (skipBlanks(parser); parser.pos < text.size(); skipBlanks(parser)) {
    if (peek(parser) == '#') {
      readInstance(parser);
    } else if (skipStatement(parser) == "END-ISO-10303-21") {
      break;
    }
  }
  return parser.instances;
}

bool isTessellated(const ExchangeInstance& instance) {
  return std::any_of(instance.records.begin(), instance.records.end(), [](const auto& record) {
    return record.first.find("TESSELLATED") != std::string::npos ||
           record.first.find("TRIANGULATED") != std::string::npos ||
           record.first == "COORDINATES_LIST";
  });
}

std::string simpleType(const ExchangeInstance& instance) {
  return instance.isComplex ? "" : instance.records.begin()->first;
}

const Parameters* recordOf(const ExchangeInstance& instance, const std::string& type) {
  const auto found = instance.records.find(type);
  return found == instance.records.end() ? nullptr : &found->second;
}

void collectReferences(const Parameter& parameter, std::vector<std::string>& references) {
  if (parameter.kind == Parameter::Kind::Reference) {
    references.push_back(parameter.text);
  }
  for (const Parameter& item : parameter.items) {
    collectReferences(item, references);
  }
}

std::vector<std::string> referencesOf(const ExchangeInstance& instance) {
  std::vector<std::string> references;
  for (const auto& [type, parameters] : instance.records) {
    for (const Parameter& parameter : parameters) {
      collectReferences(parameter, references);
    }
  }
  return references;
}

}  // namespace plenvorith::test
