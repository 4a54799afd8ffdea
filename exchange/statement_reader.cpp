#include "exchange/statement_reader.h"

#include <algorithm>

#include "common/ascii.h"
#include "exchange/byte_scan.h"

namespace plenvorith {
namespace {

constexpr std::string_view kStart = "ISO-10303-21";

/// What stands behind "ISO" in the mark of this part of the standard or another one.
constexpr bool isOfMark(char c) {
  return isDigit(c) || c == '-';
}

/// Whether a keyword, in capital letters, is the mark that ends the file.
bool isEndMark(std::string_view word) {
  constexpr std::string_view kEndOfFile = "END-ISO";
  return word.starts_with(kEndOfFile) &&
         std::all_of(word.begin() + kEndOfFile.size(), word.end(), isOfMark);
}

constexpr bool isWordCharacter(char c) {
  return (capital(c) >= 'A' && capital(c) <= 'Z') || isDigit(c) || c == '_' || c == '-' ||
         c == '!' || c == '&';
}

}  // namespace

void StatementReader::fail(const char* what) {
  raw_.fail(what);
  isEnded_ = true;
}

/// Goes behind a mark like "ISO-10303-28;" or "ISO;" that the file begins with; false if there is none.
bool StatementReader::takeOtherMark() {
  constexpr std::string_view kIso = "ISO";
  constexpr std::size_t kLongest = 64;
  while (raw_.ensure(1) && isIgnored(raw_.atHand().front())) {
    raw_.skip(1);
  }
  (void)raw_.ensure(kLongest);
  const std::string_view text = raw_.atHand().substr(0, kLongest);
  const auto* const end = startsWith(text, kIso)
                              ? std::find_if_not(text.begin() + kIso.size(), text.end(), isOfMark)
                              : text.end();
  const bool isMark = end != text.end() && *end == ';';
  raw_.skip(isMark ? static_cast<std::size_t>(end - text.begin()) + 1 : 0);
  return isMark;
}

/// Goes behind "ISO-10303-21;", which has to be there, or behind another mark at the very beginning.
bool StatementReader::findStart() {
  if (takeOtherMark()) {
    return true;
  }
  while (raw_.ensure(kStart.size() + 1)) {
    const std::string_view rest = raw_.atHand();
    const auto place = std::search(rest.begin(), rest.end(), kStart.begin(), kStart.end(),
                                   [](char a, char b) { return capital(a) == b; });
    const auto found = static_cast<std::size_t>(place - rest.begin());
    if (found == rest.size()) {
      // What is kept may be the byte before the word and all of it but one.
      raw_.skip(rest.size() - kStart.size());
      continue;
    }
    const bool isEndMark = found > 0 && rest[found - 1] == '-';  // of "END-"
    raw_.skip(found + kStart.size());
    if (!isEndMark && raw_.peek() == ';') {
      raw_.skip(1);
      return true;
    }
  }
  return false;
}

/// Reads "#12=", the first of which is next; false, somewhere in it, where something else stands, or
/// a number that no instance can have.
bool StatementReader::readName() {
  raw_.skip(1);
  bool hasDigits = false;
  std::uint64_t number = 0;
  int c = raw_.peek();
  for (; c >= 0 && isDigit(static_cast<char>(c)); c = raw_.peek()) {
    const std::string_view text = raw_.atHand();
    std::size_t size = 0;
    for (; size < text.size() && isDigit(text[size]); ++size) {
      const auto digit = static_cast<std::uint64_t>(text[size] - '0');
      number = std::min(number * 10 + digit, kLargestNumber + 1);
    }
    raw_.skip(size);
    hasDigits = true;
  }
  number_ = number;
  if (!hasDigits || c != '=') {
    return false;
  }
  raw_.skip(1);
  return number_ <= kLargestNumber;
}

/// Reads a keyword behind blanks; what is longer than any keyword is cut.
void StatementReader::readWord() {
  constexpr std::size_t kLongest = 256;
  word_.clear();
  (void)raw_.peek();  // skips blanks
  while (raw_.ensure(1) && isWordCharacter(raw_.atHand().front())) {
    if (word_.size() < kLongest) {
      word_ += capital(raw_.atHand().front());
    }
    raw_.skip(1);
  }
}

Statement StatementReader::next() {
  if (!body_.isWhole()) {
    (void)body_.skip();
  }
  if (!isStarted_) {
    isStarted_ = true;
    if (!findStart()) {
      fail("not a STEP file");
    }
  }
  while (!isEnded_) {
    const int c = raw_.peek();
    if (c < 0) {
      if (!scopes_.empty()) {
        raw_.fail("a scope never ends");
      }
      isEnded_ = true;
      break;
    }
    const std::optional<Statement> statement = c == '#' ? takeNamed() : takeWord();
    if (statement) {
      return *statement;
    }
  }
  return Statement::End;
}

/// Takes what starts with "#".
std::optional<Statement> StatementReader::takeNamed() {
  if (section_ == Section::None && hasData_) {
    section_ = Section::Data;  // which seemed to end
  }
  if (section_ != Section::Data) {
    skipStatement();
    return std::nullopt;
  }
  return readName() ? takeInstance() : takeJunk();
}

/// Takes what stands behind "#12=". Gives nothing of a scope, whose own instances come first.
std::optional<Statement> StatementReader::takeInstance() {
  if (isEnded_) {
    return std::nullopt;
  }
  if (raw_.peek() == '&') {
    readWord();
    scopes_.push_back(number_);
    return std::nullopt;
  }
  return startInstance();
}

/// Goes over what is no instance, to behind the next semicolon or to the instance before that.
std::optional<Statement> StatementReader::takeJunk() {
  for (int c = raw_.peek(); c >= 0; c = raw_.peek()) {
    if (c != '#') {
      raw_.skip(1);
    } else if (readName()) {
      return takeInstance();
    }
    if (c == ';') {
      break;
    }
  }
  return std::nullopt;
}

/// Takes what starts with a keyword, or with anything else. Gives nothing where it is passed over.
std::optional<Statement> StatementReader::takeWord() {
  readWord();
  if (word_ == "ENDSCOPE" && section_ == Section::Data) {
    return endScope() ? std::optional(startInstance()) : std::nullopt;
  }
  if (isEndMark(word_)) {
    isEnded_ = true;
    return std::nullopt;
  }
  const Section before = section_;
  if (enterSection()) {
    if (section_ == Section::Other) {
      skipSection();
    } else {
      skipStatement();
    }
  } else if (before == Section::Data) {
    return takeJunk();
  } else if (before == Section::Header && !word_.empty()) {
    body_.start();
    return Statement::HeaderEntity;
  } else {
    skipStatement();
  }
  return std::nullopt;
}

/// Whether the keyword begins or ends a section.
bool StatementReader::enterSection() {
  if (word_ == "HEADER" && !hasData_) {
    section_ = Section::Header;
  } else if (word_ == "DATA") {
    section_ = Section::Data;
    hasData_ = true;
  } else if (word_ == "ENDSEC") {
    section_ = Section::None;
  } else if (section_ == Section::None &&
             (word_ == "ANCHOR" || word_ == "REFERENCE" || word_ == "SIGNATURE")) {
    section_ = Section::Other;
  } else {
    return false;
  }
  return true;
}

/// Goes behind "ENDSEC;", byte by byte.
void StatementReader::skipSection() {
  constexpr std::string_view kSectionEnd = "ENDSEC;";
  std::string last;  // as many bytes other than blanks
  while (last != kSectionEnd && raw_.ensure(1)) {
    const char c = raw_.atHand().front();
    raw_.skip(1);
    if (!isIgnored(c)) {
      last.erase(0, last.size() == kSectionEnd.size() ? 1 : 0);
      last += capital(c);
    }
  }
  section_ = Section::None;
}

void StatementReader::skipStatement() {
  body_.start();
  (void)body_.skip();
}

/// Goes over the export list behind ENDSCOPE, "/#1,#2/", to the body of the scope's instance.
bool StatementReader::endScope() {
  if (scopes_.empty()) {
    return false;
  }
  number_ = scopes_.back();
  scopes_.pop_back();
  if (raw_.peek() == '/') {
    raw_.skip(1);
    int c = raw_.peek();
    for (; c >= 0 && c != '/' && c != ';'; c = raw_.peek()) {
      raw_.skip(1);
    }
    raw_.skip(c == '/' ? 1 : 0);
  }
  return true;
}

Statement StatementReader::startInstance() {
  if (raw_.peek() < 0) {
    fail("an instance never ends");
    return Statement::End;
  }
  offset_ = raw_.offset();
  body_.start();
  return Statement::Instance;
}

void StatementReader::seekBody(std::uint64_t offset) {
  if (!raw_.seek(offset)) {
    isEnded_ = true;
    body_.startEmpty();
    return;
  }
  offset_ = offset;
  body_.start();
}

}  // namespace plenvorith
