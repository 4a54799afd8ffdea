#include "tests/reference/reference_statements.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <regex>
#include <vector>

#include "exchange/statement_body.h"
#include "exchange/statement_reader.h"

namespace plenvorith::test {
namespace {

/// One byte outside of strings and comments, or a whole one of these, or a string up to a line
/// that it can't go over.
struct Token {
  enum class Kind { Byte, Blank, Comment, String, CutString, Unended } kind = Kind::Byte;
  std::string text;
};

bool isBlank(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}

/// The next line end from a place on that stands before an instance or "ENDSEC;", if it is before `end`; npos
/// if there is none.
std::size_t endOfUnended(std::string_view text, std::size_t place, std::size_t end) {
  for (place = text.find('\n', place); place < end && place != std::string_view::npos;
       place = text.find('\n', place + 1)) {
    if (beginsStatement(text.substr(place + 1))) {
      return place;
    }
  }
  return std::string_view::npos;
}

/// The token at a place; one that never ends says what it is.
Token tokenAt(std::string_view text, std::size_t place) {
  const char c = text[place];
  const auto upTo = [&](std::string_view mark, std::size_t from, Token::Kind kind,
                        const char* what) {
    const std::size_t end = text.find(mark, from);
    return end == std::string_view::npos
               ? Token{Token::Kind::Unended, what}
               : Token{kind, std::string(text.substr(place, end + mark.size() - place))};
  };
  if (isBlank(c)) {
    return {Token::Kind::Blank, std::string(1, c)};
  }
  if (text.substr(place, 2) == "/*") {
    return upTo("*/", place + 2, Token::Kind::Comment, "a comment never ends");
  }
  if (c == '\'') {
    std::size_t end = place;
    do {
      const std::size_t next = text.find('\'', end + 1);
      const std::size_t cut = endOfUnended(text, end + 1, next);
      end = next;
      if (cut < end) {
        return {Token::Kind::CutString, std::string(text.substr(place, cut - place))};
      }
      if (end == std::string_view::npos) {
        return {Token::Kind::Unended, "a string never ends"};
      }
      ++end;
    } while (end < text.size() && text[end] == '\'');
    return {Token::Kind::String, std::string(text.substr(place, end - place))};
  }
  return {Token::Kind::Byte, std::string(1, c)};
}

std::string capitals(std::string text) {
  for (char& c : text) {
    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return text;
}

std::string withoutLineEnds(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c != '\n' && c != '\r') {
      result += c;
    }
  }
  return result;
}

class Reference {
 public:
  explicit Reference(std::string_view text) : text_(text) {}

  std::string read();

 private:
  /// The next byte that is neither blank nor in a comment; 0 at the end or behind an error.
  char next();
  std::string readWord();
  void add(const std::string& start, const std::string& body);
  std::string readBody();
  std::string readBodyAsItIs();
  [[nodiscard]] bool isInParameters() const;
  bool readName(std::uint64_t& number);
  void readNamed(std::uint64_t number);
  void readInstance();
  void readJunk();
  void skipSection();
  void readKeyword();
  bool goToStart();
  void fail(const std::string& what) {
    error_ = error_.empty() ? what : error_;
    place_ = text_.size();
  }

  std::string_view text_;
  std::size_t place_ = 0;
  std::size_t bodyStart_ = 0;
  std::string section_;
  bool hasData_ = false;
  std::vector<std::uint64_t> scopes_;
  bool isEnded_ = false;
  std::string all_;
  std::string error_;
};

char Reference::next() {
  while (place_ < text_.size()) {
    const Token token = tokenAt(text_, place_);
    if (token.kind == Token::Kind::Unended && token.text == "a comment never ends") {
      fail(token.text);
    } else if (token.kind == Token::Kind::Blank || token.kind == Token::Kind::Comment) {
      place_ += token.text.size();
    } else {
      return text_[place_];
    }
  }
  return '\0';
}

std::string Reference::readWord() {
  std::string word;
  (void)next();
  while (place_ < text_.size() &&
         (std::isalnum(static_cast<unsigned char>(text_[place_])) != 0 ||
          std::string_view("_-!&").find(text_[place_]) != std::string_view::npos)) {
    word += text_[place_++];
  }
  return capitals(word.substr(0, 256));
}

/// Statements that never end are left out: the product may have handed out any part of them.
void Reference::add(const std::string& start, const std::string& body) {
  if (error_.empty()) {
    all_ += start + body + '\n';
  }
}

/// Whether the keyword at the start, behind one parenthesis perhaps, has small letters.
bool startsWithSmallLetters(const std::string& body) {
  for (std::size_t i = body.starts_with('(') ? 1 : 0; i < body.size(); ++i) {
    const char c = body[i];
    if (c >= 'a' && c <= 'z') {
      return true;
    }
    if (!((c >= 'A' && c <= 'Z') || c == '_' || (c >= '0' && c <= '9'))) {
      return false;
    }
  }
  return false;
}

/// To the semicolon, which is taken. If it starts in small letters, all of them become capital ones,
/// strings aside.
std::string Reference::readBody() {
  std::string body = readBodyAsItIs();
  if (!startsWithSmallLetters(body)) {
    return body;
  }
  std::string raised;
  for (std::size_t place = 0; place < body.size();) {
    const Token token = tokenAt(body, place);
    const bool isText = token.kind == Token::Kind::Byte;
    raised += isText ? capitals(token.text) : token.text;
    place += token.text.size();
  }
  return raised;
}

/// Whether the semicolon at the place belongs to the keyword of a section among parameters.
bool Reference::isInParameters() const {
  static const std::regex kWord("([^]*[^A-Za-z_])?(DATA|ENDSEC|HEADER)", std::regex::icase);
  static const std::regex kParameter("[,()'\"$*.+#0-9-][^]*");
  const std::size_t first = std::max(bodyStart_, place_ < 7 ? 0 : place_ - 7);
  if (place_ == 0 || std::isalpha(static_cast<unsigned char>(text_[place_ - 1])) == 0) {
    return false;
  }
  std::string next(text_.substr(place_ + 1, 64));
  next.erase(next.begin(), std::find_if_not(next.begin(), next.end(), isBlank));
  return std::regex_match(std::string(text_.substr(first, place_ - first)), kWord) &&
         std::regex_match(next, kParameter) && !beginsStatement(next);
}

std::string Reference::readBodyAsItIs() {
  std::string body;
  bodyStart_ = place_;
  while (place_ < text_.size() && (text_[place_] != ';' || isInParameters())) {
    const Token token = tokenAt(text_, place_);
    place_ += token.text.size();
    switch (token.kind) {
      case Token::Kind::Unended:
        fail(token.text);
        return body;
      case Token::Kind::CutString:
        return body;
      case Token::Kind::String: {
        const std::string plain = withoutLineEnds(token.text);
        body += plain.size() > StatementBody::kLongestString + 2 ? "''" : plain;
        break;
      }
      case Token::Kind::Byte:
        body += token.text == "/" ? "" : token.text;
        if (token.text == "#") {
          std::string digits;
          while (place_ < text_.size() && text_[place_] == '0') {
            digits = text_[place_++];
          }
          const bool isMore =
              place_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[place_])) != 0;
          body += isMore ? "" : digits;
        }
        break;
      default:
        break;
    }
  }
  if (place_ == text_.size()) {
    fail("an instance never ends");
  } else {
    ++place_;
  }
  return body;
}

/// Behind "#12="; false where something else stands.
bool Reference::readName(std::uint64_t& number) {
  ++place_;
  number = 0;
  bool hasDigits = false;
  while (std::isdigit(static_cast<unsigned char>(next())) != 0) {
    number = number * 10 + static_cast<std::uint64_t>(text_[place_++] - '0');
    number = number > 99'999'999'999'999'999U ? 100'000'000'000'000'000U : number;
    hasDigits = true;
  }
  const bool isName = hasDigits && next() == '=';
  place_ += isName ? 1U : 0U;
  return isName && number <= 99'999'999'999'999'999U;
}

/// What stands behind "#12=".
void Reference::readNamed(std::uint64_t number) {
  if (!error_.empty()) {
    return;
  }
  if (next() == '&') {
    (void)readWord();
    scopes_.push_back(number);
  } else if (next() == '\0' && place_ == text_.size()) {
    fail("an instance never ends");
  } else {
    add('#' + std::to_string(number) + '=', readBody());
  }
}

void Reference::readInstance() {
  std::uint64_t number = 0;
  section_ = section_.empty() && hasData_ ? "DATA" : section_;
  if (section_ != "DATA") {
    (void)readBody();
  } else if (readName(number)) {
    readNamed(number);
  } else {
    readJunk();
  }
}

/// To behind the next semicolon, or over the instance before that.
void Reference::readJunk() {
  while (error_.empty()) {
    const char c = next();
    if (place_ == text_.size()) {
      return;
    }
    std::uint64_t number = 0;
    if (c != '#') {
      ++place_;
    } else if (readName(number)) {
      readNamed(number);
      return;
    }
    if (c == ';') {
      return;
    }
  }
}

/// Behind "ENDSEC;", whatever stands before it.
void Reference::skipSection() {
  std::string seen;
  while (place_ < text_.size() && !seen.ends_with("ENDSEC;")) {
    const char c = text_[place_++];
    seen += isBlank(c) ? std::string() : capitals(std::string(1, c));
  }
  section_.clear();
}

void Reference::readKeyword() {
  const std::string word = readWord();
  if (word == "ENDSCOPE" && section_ == "DATA") {
    if (scopes_.empty()) {
      return;
    }
    const std::uint64_t number = scopes_.back();
    scopes_.pop_back();
    if (next() == '/') {
      ++place_;
      while (next() != '\0' && next() != '/' && next() != ';') {
        ++place_;
      }
      place_ += next() == '/' ? 1U : 0U;
    }
    if (next() == '\0' && place_ == text_.size()) {
      fail("an instance never ends");
      return;
    }
    add('#' + std::to_string(number) + '=', readBody());
  } else if (std::regex_match(word, std::regex("END-ISO[0-9-]*"))) {
    isEnded_ = true;
  } else {
    if ((word == "HEADER" && !hasData_) || word == "DATA") {
      section_ = word;
      hasData_ = hasData_ || word == "DATA";
    } else if (word == "ENDSEC") {
      section_.clear();
    } else if (section_.empty() &&
               (word == "ANCHOR" || word == "REFERENCE" || word == "SIGNATURE")) {
      skipSection();
      return;
    } else if (section_ == "HEADER" && !word.empty()) {
      add(word, readBody());
      return;
    } else if (section_ == "DATA") {
      readJunk();
      return;
    }
    (void)readBody();
  }
}

/// Behind "ISO-10303-21;", which is not behind "END-", or behind another mark that is first of all.
bool Reference::goToStart() {
  constexpr std::string_view kStart = "ISO-10303-21";
  const std::string raised = capitals(std::string(text_));
  static const std::regex kFirst("[\\x00-\\x20]*ISO[0-9-]*;");
  std::smatch first;
  if (std::regex_search(raised, first, kFirst, std::regex_constants::match_continuous)) {
    place_ = static_cast<std::size_t>(first.length());
    return true;
  }
  for (place_ = raised.find(kStart); place_ != std::string_view::npos;
       place_ = raised.find(kStart, place_)) {
    const bool isEnd = place_ > 0 && text_[place_ - 1] == '-';
    place_ += kStart.size();
    if (!isEnd && next() == ';') {
      ++place_;
      return true;
    }
    if (!error_.empty()) {
      return false;
    }
  }
  return false;
}

std::string Reference::read() {
  if (!goToStart()) {
    return all_ + (error_.empty() ? "not a STEP file" : error_);
  }
  while (!isEnded_ && error_.empty()) {
    const char c = next();
    if (place_ == text_.size()) {
      if (!scopes_.empty()) {
        fail("a scope never ends");
      }
      break;
    }
    if (c == '#') {
      readInstance();
    } else {
      readKeyword();
    }
  }
  return all_ + error_;
}

}  // namespace

bool beginsStatement(std::string_view line) {
  static const std::regex kStart("#[0-9]+ *=[ (]*[A-Za-z!]|[Ee][Nn][Dd][Ss][Ee][Cc];");
  return std::regex_search(std::string(line.substr(0, 32)), kStart,
                           std::regex_constants::match_continuous);
}

std::string referenceStatements(std::string_view content) {
  return Reference(content).read();
}

std::string readStatements(const std::string& path) {
  StatementReader reader(path);
  std::string all;
  for (Statement statement = reader.next(); statement != Statement::End;
       statement = reader.next()) {
    std::string line = statement == Statement::Instance
                           ? '#' + std::to_string(reader.number()) + '='
                           : reader.headerKeyword();
    for (std::string_view text = reader.peek(); !text.empty(); text = reader.peek()) {
      line += text;
      reader.consume(text.size());
    }
    all += reader.error().empty() ? line + '\n' : std::string();
  }
  return all + reader.error();
}

}  // namespace plenvorith::test
