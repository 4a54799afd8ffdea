#include "exchange/token_reader.h"

#include <algorithm>
#include <cstring>

#include "common/ascii.h"
#include "exchange/byte_scan.h"

namespace plenvorith {
namespace {

/// What ends a keyword, a number and anything else that is no string.
constexpr bool isDelimiter(char c) {
  return c == '(' || c == ')' || c == ',' || c == '#' || c == '\'';
}

constexpr bool startsNumber(char c) {
  return isDigit(c) || c == '-' || c == '+' || c == '.';
}

}  // namespace

void TokenReader::refill(std::ptrdiff_t size) {
  consume();
  const std::string_view text = reader_.peek(static_cast<std::size_t>(size));
  begin_ = text.data();
  p_ = begin_;
  end_ = begin_ + text.size();
  isWhole_ = reader_.isWhole();
}

bool TokenReader::readMore() {
  const std::ptrdiff_t before = end_ - p_;
  if (!isWhole_) {
    refill(2 * std::max(before, kLookahead));
  }
  return end_ - p_ > before;
}

void TokenReader::goTo(const BodyPlace& place) {
  reader_.goTo(place);
  begin_ = p_;  // nothing of what was looked at is left to be consumed
  cut_ = Token::Kind::End;
  refill(kLookahead);
}

/// The token from what is next to there.
Token TokenReader::tokenTo(Token::Kind kind, const char* end) {
  Token token;
  token.kind = kind;
  token.text = {p_, static_cast<std::size_t>(end - p_)};
  p_ = end;
  return token;
}

Token TokenReader::takeRun(Token::Kind kind, bool isRest) {
  const char* const first = p_ + (isRest ? 0 : 1);
  const char* const end = std::find_if(first, end_, isDelimiter);
  cut_ = end == end_ && !isWhole_ ? kind : Token::Kind::End;
  Token token = tokenTo(kind, end);
  token.isRest = isRest;
  return token;
}

Token TokenReader::takeReference() {
  std::uint64_t number = 0;
  const char* end = p_ + 1;
  for (; end != end_ && isDigit(*end); ++end) {
    number = std::min(number * 10 + static_cast<std::uint64_t>(*end - '0'), kLargestNumber + 1);
  }
  // The rest of a longer one than that is none of digits that anything could look for.
  cut_ = end == end_ && !isWhole_ ? Token::Kind::Other : Token::Kind::End;
  Token token = tokenTo(Token::Kind::Reference, end);
  token.number = number > kLargestNumber ? Token::kNoNumber : number;
  return token;
}

Token TokenReader::takeString() {
  const char* end = p_;
  while (end != end_ && *end == '\'') {
    // An apostrophe right behind one is doubled, and the string goes on.
    end = std::find(end + 1, end_, '\'');
    end += end == end_ ? 0 : 1;
  }
  return tokenTo(Token::Kind::String, end);
}

Token TokenReader::next() {
  const char c = peek();
  if (p_ == end_) {
    return {};
  }
  if (cut_ != Token::Kind::End) {
    return takeRun(cut_, true);
  }
  switch (c) {
    case '(':
      return tokenTo(Token::Kind::Open, p_ + 1);
    case ')':
      return tokenTo(Token::Kind::Close, p_ + 1);
    case ',':
      return tokenTo(Token::Kind::Comma, p_ + 1);
    case '#':
      return takeReference();
    case '\'':
      return takeString();
    default: {
      const bool isWord = (capital(c) >= 'A' && capital(c) <= 'Z') || c == '!';
      return takeRun(isWord ? Token::Kind::Keyword : Token::Kind::Other, false);
    }
  }
}

std::string TokenReader::takeKeyword() {
  std::string keyword;
  const char c = capital(peek());
  if ((c >= 'A' && c <= 'Z') || c == '!') {
    do {
      keyword += next().text;
    } while (cut_ != Token::Kind::End);
  }
  return keyword;
}

/// Goes over a list of lists of numbers, as normals are. Gives how many parentheses are still open
/// where something else follows.
std::int64_t TokenReader::skipNumberLists() {
  if (peek() != '(' || end_ - p_ < 3 || p_[1] != '(' || !startsNumber(p_[2])) {
    return 0;
  }
  p_ += 2;
  while (end_ - p_ > 1) {
    const void* const found = std::memchr(p_, ')', static_cast<std::size_t>(end_ - p_ - 1));
    if (found == nullptr) {
      p_ = end_ - 1;
      (void)peek();
      continue;
    }
    p_ = static_cast<const char*>(found) + 1;
    if (*p_ == ')') {
      ++p_;
      return 0;
    }
    if (end_ - p_ < kLookahead) {
      (void)peek();
    }
    if (end_ - p_ < 3 || p_[0] != ',' || p_[1] != '(' || !startsNumber(p_[2])) {
      return 1;
    }
  }
  return 2;
}

void TokenReader::skipParameter() {
  std::int64_t depth = skipNumberLists();
  for (char c = peek(); p_ != end_; c = peek()) {
    if (depth == 0 && (c == ',' || c == ')') && cut_ == Token::Kind::End) {
      return;
    }
    const Token token = next();
    depth += token.kind == Token::Kind::Open ? 1 : token.kind == Token::Kind::Close ? -1 : 0;
  }
}

bool TokenReader::skipParameters(int count) {
  bool isThere = true;
  for (int i = 0; i < count && isThere; ++i) {
    skipParameter();
    isThere = take(',');
  }
  return isThere;
}

bool TokenReader::skipRecord() {
  if (!take('(')) {
    return false;
  }
  do {
    skipParameter();
  } while (take(','));
  return take(')');
}

bool TokenReader::enterRecord(std::string_view keyword, bool isComplex) {
  if (isComplex) {
    (void)take('(');
  }
  while (takeKeyword() != keyword) {
    if (!isComplex || !skipRecord()) {
      return false;
    }
  }
  return take('(');
}

}  // namespace plenvorith
