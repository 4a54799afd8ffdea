#include "exchange/statement_body.h"

#include <algorithm>
#include <cstring>

#include "common/ascii.h"
#include "exchange/byte_scan.h"

namespace plenvorith {
namespace {

/// More than the longest string and anything that is asked for at once.
constexpr std::size_t kWindowSize = std::size_t{1} << 17;

/// At least as much is written at once, if the body has it.
constexpr std::size_t kWorthwhile = std::size_t{1} << 13;

}  // namespace

void NamedNumbers::addPart(const char* p, const char* end) {
  while (p != end) {
    if (!isOpen_) {
      const void* const mark = std::memchr(p, '#', static_cast<std::size_t>(end - p));
      if (mark == nullptr) {
        return;
      }
      p = static_cast<const char*>(mark) + 1;
      isOpen_ = true;
    }
    for (; p != end && isDigit(*p); ++p) {
      // Zeros in front are none of its digits.
      digits_ += number_ > 0 || *p != '0' ? 1 : 0;
      number_ = digits_ > kMaxDigits ? 1 : number_ * 10 + static_cast<std::uint64_t>(*p - '0');
    }
    if (p != end) {
      endPart();
    }
  }
}

void NamedNumbers::endPart() {
  if (isOpen_ && digits_ > 0 && digits_ <= kMaxDigits) {
    std::uint64_t& least = least_[digits_];
    least = least == 0 ? number_ : std::min(least, number_);
  }
  isOpen_ = false;
  number_ = 0;
  digits_ = 0;
}

bool NamedNumbers::leaveFree(std::uint64_t powerOfTen, std::uint64_t count) const {
  std::size_t digits = 1;
  for (std::uint64_t rest = powerOfTen; rest >= 10; rest /= 10) {
    ++digits;
  }
  return digits > kMaxDigits || least_[digits] == 0 || least_[digits] - powerOfTen >= count;
}

StatementBody::StatementBody(RawText& raw) : raw_(raw), window_(kWindowSize) {}

void StatementBody::start() {
  startEmpty();
  isWhole_ = false;
  isFirst_ = true;
  isRaised_ = false;
}

void StatementBody::startEmpty() {
  begin_ = 0;
  visible_ = 0;
  end_ = 0;
  state_ = State::Text;
  isWhole_ = true;
  windowStart_ = 0;
  coming_ = {raw_.offset(), 0};
}

BodyPlace StatementBody::place() const {
  const std::uint64_t here = windowStart_ + begin_;
  const Mark& mark = coming_.handedOut <= here ? coming_ : passed_;
  return {mark.offset, here - mark.handedOut};
}

void StatementBody::goTo(const BodyPlace& place) {
  const bool isThere = raw_.seek(place.offset);
  startEmpty();
  isWhole_ = !isThere;
  std::uint64_t ahead = place.ahead;
  for (std::size_t size = peek(1).size(); ahead > 0 && size > 0; size = peek(1).size()) {
    consume(std::min<std::uint64_t>(size, ahead));
    ahead -= std::min<std::uint64_t>(size, ahead);
  }
}

void StatementBody::failUnended() {
  isWhole_ = true;
  switch (state_) {
    case State::String:
      return raw_.fail("a string never ends");
    case State::Binary:
      return raw_.fail("a binary never ends");
    case State::Comment:
    case State::Star:
      return raw_.fail("a comment never ends");
    default:
      return raw_.fail("an instance never ends");
  }
}

Parentheses StatementBody::skip() {
  Parentheses counts;
  const char* const end = window_.data() + visible_;
  for (const char* p = window_.data() + begin_; p != end;) {
    p = findMark(p, end, counts);
    const bool isString = p != end && (*p == '\'' || *p == '"');
    p = isString ? std::find(p + 1, end, *p) : p;
    p += p == end ? 0 : 1;
  }
  begin_ = visible_;
  if (state_ == State::Apostrophe || state_ == State::Reference) {
    state_ = State::Text;
  }
  while (!isWhole_) {
    if (raw_.atHand().empty() && !raw_.readMore()) {
      failUnended();
      break;
    }
    const std::string_view text = raw_.atHand();
    const char* const behind = skipPiece(text.data(), text.data() + text.size(), counts);
    raw_.skip(static_cast<std::size_t>(behind - text.data()));
  }
  return counts;
}

/// Goes over a part of one kind, which has one byte at least. Gives the place behind it.
const char* StatementBody::skipPiece(const char* p, const char* end, Parentheses& counts) {
  switch (state_) {
    case State::String:
    case State::Binary:
    case State::Comment: {
      const char mark = state_ == State::String ? '\'' : state_ == State::Binary ? '"' : '*';
      const void* const found = std::memchr(p, mark, static_cast<std::size_t>(end - p));
      if (state_ == State::String) {
        named_.addPart(p, found == nullptr ? end : static_cast<const char*>(found));
      }
      if (found == nullptr) {
        return end;
      }
      named_.endPart();
      state_ = state_ == State::Comment ? State::Star : State::Text;
      return static_cast<const char*>(found) + 1;
    }
    case State::Star:
      state_ = *p == '/' ? State::Text : *p == '*' ? State::Star : State::Comment;
      return p + 1;
    case State::Slash:
      state_ = *p == '*' ? State::Comment : State::Text;
      return p + (*p == '*' ? 1 : 0);
    default:
      p = findMark(p, end, counts);
      if (p == end) {
        return p;
      }
      isWhole_ = *p == ';';
      state_ = *p == '\''  ? State::String
               : *p == '"' ? State::Binary
               : *p == '/' ? State::Slash
                           : State::Text;
      return p + 1;
  }
}

/// Whether the first keyword of what can be handed out, behind a parenthesis perhaps, has any.
bool StatementBody::startsWithSmallLetters() const {
  const char* p = window_.data() + (visible_ > 0 && window_[0] == '(' ? 1 : 0);
  const char* const end = window_.data() + visible_;
  while (p < end && ((*p >= 'A' && *p <= 'Z') || *p == '_' || isDigit(*p))) {
    ++p;
  }
  return p < end && *p >= 'a' && *p <= 'z';
}

/// Writes more of the body, until `size` bytes can be handed out or the body ends.
void StatementBody::fill(std::size_t size) {
  const bool isFirst = isFirst_;
  const std::uint64_t offset = raw_.offset();
  const std::uint64_t emptied = emptiedStrings_;
  isFirst_ = false;
  write(size);
  if (isFirst && startsWithSmallLetters() && raw_.seek(offset)) {
    startEmpty();
    isWhole_ = false;
    isRaised_ = true;
    emptiedStrings_ = emptied;
    write(size);
  }
}

void StatementBody::write(std::size_t size) {
  makeRoom(size);
  if (state_ == State::Text && coming_.handedOut <= windowStart_ + begin_) {
    passed_ = coming_;
    coming_ = {raw_.offset(), windowStart_ + end_};
  }
  while (visible_ - begin_ < size && !isWhole_) {
    if (raw_.atHand().empty() && !raw_.readMore()) {
      if (state_ == State::Apostrophe) {
        endString();
      }
      failUnended();
      return;
    }
    if (window_.size() - end_ < 2) {
      makeRoom(size);
    }
    normalise(std::max(size, kWorthwhile));
  }
}

/// Moves what is left to the front of the window, and makes the window larger if need be.
void StatementBody::makeRoom(std::size_t size) {
  std::memmove(window_.data(), window_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  visible_ -= begin_;
  stringStart_ -= std::min(stringStart_, begin_);
  windowStart_ += begin_;
  begin_ = 0;
  const std::size_t needed = std::max(size, end_) + 2 * kLongestString;
  if (needed > window_.size()) {
    window_.resize(2 * needed);
  }
}

/// Writes from what is at hand until it ends, or the room, or the body, or `size` bytes can be
/// handed out.
void StatementBody::normalise(std::size_t size) {
  const std::string_view text = raw_.atHand();
  const char* p = text.data();
  const char* const textEnd = p + text.size();
  while (p != textEnd && !isWhole_ && window_.size() - end_ >= 2 && visible_ - begin_ < size) {
    const std::size_t room = std::min(window_.size() - end_ - 1, size);
    const char* const end = p + std::min(textEnd - p, static_cast<std::ptrdiff_t>(room));
    p = copyRun(p, end);
    if (p != end && *p == '\'' && state_ == State::Text) {
      p = copyString(p, end);
    }
    if (p != end && normaliseSpecial(*p)) {
      ++p;
    }
  }
  raw_.skip(static_cast<std::size_t>(p - text.data()));
}

/// Writes the bytes that stay as they are, in text, in a string or a binary. Gives the place behind
/// them.
const char* StatementBody::copyRun(const char* p, const char* end) {
  const char* run = p;
  if (state_ == State::Text) {
    run = findSpecial(p, end);
  } else if (state_ == State::String || state_ == State::Binary) {
    const char quote = state_ == State::String ? '\'' : '"';
    while (run != end && *run != quote && *run != '\n' && *run != '\r') {
      ++run;
    }
  }
  const auto size = static_cast<std::size_t>(run - p);
  if (state_ == State::String) {
    stringSize_ += size;
    named_.addPart(p, run);
  }
  if (state_ != State::String || stringSize_ <= kLongestString + 1) {
    std::memcpy(window_.data() + end_, p, size);
    if (state_ == State::Text && isRaised_) {
      std::transform(p, run, window_.data() + end_, capital);
    }
    end_ += size;
  } else {
    end_ = stringStart_;
  }
  if (state_ == State::Text || state_ == State::Binary) {
    visible_ = end_;
  }
  return run;
}

/// Writes a string that is next, and whole, and stays as it is: as nearly all do. Gives the place
/// behind it, or that of any other one.
const char* StatementBody::copyString(const char* p, const char* end) {
  const char* const close =
      std::find_if(p + 1, end, [](char c) { return c == '\'' || c == '\n' || c == '\r'; });
  const auto size = static_cast<std::size_t>(close - p) + 1;
  if (end - close < 2 || *close != '\'' || close[1] == '\'' || size > kLongestString) {
    return p;
  }
  named_.addPart(p + 1, close);
  named_.endPart();
  std::memcpy(window_.data() + end_, p, size);
  end_ += size;
  visible_ = end_;
  return close + 1;
}

/// Writes one byte by the state that the text is in; false if it has to be looked at again, in
/// another state.
bool StatementBody::normaliseSpecial(char c) {
  switch (state_) {
    case State::Text:
      normaliseInText(c);
      return true;
    case State::Reference:
      return skipZero(c);
    case State::Slash:
      state_ = c == '*' ? State::Comment : State::Text;
      return c == '*';
    case State::Comment:
      state_ = c == '*' ? State::Star : State::Comment;
      return true;
    case State::Star:
      state_ = c == '/' ? State::Text : c == '*' ? State::Star : State::Comment;
      return true;
    case State::String:
      if (c == '\'') {
        named_.endPart();
        putInString(c);
        state_ = State::Apostrophe;
      }
      return true;
    case State::Apostrophe:
      if (c == '\'') {
        putInString(c);
        state_ = State::String;
        return true;
      }
      endString();
      return false;
    case State::Binary:
      if (c == '"') {
        put(c);
        state_ = State::Text;
      }
      visible_ = end_;
      return true;
  }
  return true;
}

void StatementBody::normaliseInText(char c) {
  if (c == '\'') {
    state_ = State::String;
    stringStart_ = end_;
    stringSize_ = 1;
    put(c);
    return;
  }
  if (c == ';') {
    isWhole_ = true;
  } else if (c == '/') {
    state_ = State::Slash;
  } else if (!isIgnored(c)) {
    state_ = c == '"' ? State::Binary : c == '#' ? State::Reference : State::Text;
    zeros_ = false;
    put(isRaised_ ? capital(c) : c);
  }
  visible_ = end_;
}

/// Goes over a zero behind "#"; false where there is none.
bool StatementBody::skipZero(char c) {
  if (c == '0') {
    zeros_ = true;
    return true;
  }
  if (zeros_ && !isDigit(c)) {
    put('0');
  }
  state_ = State::Text;
  visible_ = end_;
  return false;
}

void StatementBody::putInString(char c) {
  if (++stringSize_ <= kLongestString + 2) {
    put(c);
  }
}

/// Hands a whole string out, or an empty one if it is too long.
void StatementBody::endString() {
  if (stringSize_ > kLongestString + 2) {
    end_ = stringStart_;
    put('\'');
    put('\'');
    ++emptiedStrings_;
  }
  visible_ = end_;
  state_ = State::Text;
}

}  // namespace plenvorith
