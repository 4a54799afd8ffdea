#include "exchange/statement_body.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "common/ascii.h"
#include "exchange/byte_scan.h"

namespace plenvorith {
namespace {

/// More than the longest string and anything that is asked for at once.
constexpr std::size_t kWindowSize = std::size_t{1} << 17;

/// At least as much is written at once, if the body has it.
constexpr std::size_t kWorthwhile = std::size_t{1} << 13;

/// What a line begins with that no string goes over is not longer.
constexpr std::size_t kLongestStart = 32;

/// Whether a line begins as no line of a string does: with an instance ("#12=A", "#12=(A") or with
/// "ENDSEC;".
bool beginsStatement(std::string_view line) {
  line = line.substr(0, kLongestStart);
  if (line.empty() || line[0] != '#') {
    return startsWith(line, "ENDSEC;");
  }
  const auto* const digitsEnd = std::find_if_not(line.begin() + 1, line.end(), isDigit);
  const auto* const sign = std::find_if_not(digitsEnd, line.end(), [](char c) { return c == ' '; });
  if (digitsEnd - line.begin() == 1 || sign == line.end() || *sign != '=') {
    return false;
  }
  const auto* const keyword =
      std::find_if_not(sign + 1, line.end(), [](char c) { return c == ' ' || c == '('; });
  return keyword != line.end() &&
         (*keyword == '!' || (capital(*keyword) >= 'A' && capital(*keyword) <= 'Z'));
}

/// The keywords of sections that a kernel takes together with their semicolons.
constexpr std::array<std::string_view, 3> kSections = {"DATA;", "ENDSEC;", "HEADER;"};
constexpr std::size_t kLongestSection = 7;

/// Whether a text ends in one of them, and in no longer word.
bool endsInSection(std::string_view text) {
  return std::any_of(kSections.begin(), kSections.end(), [text](std::string_view section) {
    const std::size_t rest = text.size() - std::min(text.size(), section.size());
    const char before = rest == 0 ? ' ' : capital(text[rest - 1]);
    return startsWith(text.substr(rest), section) && before != '_' &&
           (before < 'A' || before > 'Z');
  });
}

/// Whether a text begins, behind blanks, with what stands among parameters and begins no statement.
bool goesOnWithParameters(std::string_view text) {
  constexpr std::string_view kStarts = ",()'\"$*.+-#0123456789";
  text.remove_prefix(static_cast<std::size_t>(
      std::find_if_not(text.begin(), text.end(), isIgnored) - text.begin()));
  return !text.empty() && kStarts.find(text[0]) != std::string_view::npos && !beginsStatement(text);
}

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
  start_ = raw_.offset();
  isWhole_ = false;
  isFirst_ = true;
  isRaised_ = false;
  isMalformed_ = false;
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
    if (p != end && *p == '\'') {
      p = std::find(p + 1, end, '\'');
    }
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
    if (state_ == State::String && text.front() == '\n') {
      passLineEnd();
      continue;
    }
    (void)pass(skipPiece(text.data(), text.data() + text.size(), counts));
  }
  return counts;
}

/// Goes over a part of one kind, which has one byte at least. Gives the place behind it.
const char* StatementBody::skipPiece(const char* p, const char* end, Parentheses& counts) {
  switch (state_) {
    case State::String:
      return skipInString(p, end);
    case State::Comment: {
      const void* const found = std::memchr(p, '*', static_cast<std::size_t>(end - p));
      state_ = found == nullptr ? State::Comment : State::Star;
      return found == nullptr ? end : static_cast<const char*>(found) + 1;
    }
    case State::Star:
      passInComment(*p);
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
      state_ = *p == '\'' ? State::String : *p == '/' ? State::Slash : State::Text;
      return p + 1;
  }
}

/// Goes behind the end of the string, or to the end of a line in it.
const char* StatementBody::skipInString(const char* p, const char* end) {
  const auto sizeTo = [p](const char* to) { return static_cast<std::size_t>(to - p); };
  const auto* const quote = static_cast<const char*>(std::memchr(p, '\'', sizeTo(end)));
  const char* const last = quote == nullptr ? end : quote;
  const auto* const line = static_cast<const char*>(std::memchr(p, '\n', sizeTo(last)));
  named_.addPart(p, line == nullptr ? last : line);
  if (line != nullptr || quote == nullptr) {
    return line == nullptr ? end : line;
  }
  named_.endPart();
  state_ = State::Text;
  return quote + 1;
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
    if (p != end && *p == '\n' && state_ == State::String) {
      raw_.skip(static_cast<std::size_t>(p - text.data()));
      passLineEnd();
      return;
    }
    if (p != end && normaliseSpecial(*p)) {
      ++p;
    }
  }
  if (pass(p)) {
    put(';');
    visible_ = end_;
  }
}

/// Goes over what is at hand before a place. Whether that ends in a semicolon that does not end the
/// body: the kernel passes over the keywords of sections among parameters, "A(#1,DATA;#2)".
bool StatementBody::pass(const char* behind) {
  constexpr std::string_view kLastLetters = "ACR";
  const auto size = static_cast<std::size_t>(behind - raw_.atHand().data());
  const bool mayBeSection =
      isWhole_ && (size < 2 || kLastLetters.find(capital(behind[-2])) != std::string_view::npos);
  raw_.skip(size);
  if (!mayBeSection) {
    return false;
  }
  const std::uint64_t offset = raw_.offset();
  const std::uint64_t before = std::min<std::uint64_t>(offset - start_, kLongestSection + 1);
  (void)raw_.seek(offset - before);
  const bool isSection = raw_.ensure(before) && endsInSection(raw_.atHand().substr(0, before));
  (void)raw_.seek(offset);
  (void)(isSection && raw_.ensure(2 * kLongestStart));
  isWhole_ = !isSection || !goesOnWithParameters(raw_.atHand().substr(0, 2 * kLongestStart));
  return !isWhole_;
}

/// Writes the bytes that stay as they are, in text or in a string. Gives the place behind
/// them.
const char* StatementBody::copyRun(const char* p, const char* end) {
  const char* run = p;
  if (state_ == State::Text) {
    run = findSpecial(p, end);
  } else if (state_ == State::String) {
    while (run != end && *run != '\'' && *run != '\n' && *run != '\r') {
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
  if (state_ == State::Text) {
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
    case State::Star:
      passInComment(c);
      return true;
    case State::String:
    case State::Apostrophe:
      return normaliseInString(c);
  }
  return true;
}

void StatementBody::passInComment(char c) {
  const bool isEnd = state_ == State::Star && c == '/';
  state_ = isEnd ? State::Text : c == '*' ? State::Star : State::Comment;
}

bool StatementBody::normaliseInString(char c) {
  if (c == '\'') {
    if (state_ == State::String) {
      named_.endPart();
    }
    putInString(c);
    state_ = state_ == State::String ? State::Apostrophe : State::String;
    return true;
  }
  if (state_ == State::Apostrophe) {
    endString();
    return false;
  }
  return true;  // a line end
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
    state_ = c == '#' ? State::Reference : State::Text;
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

/// Goes over the line end in a string that is next; or ends the body there, if the string has no end.
void StatementBody::passLineEnd() {
  (void)raw_.ensure(1 + kLongestStart);
  if (!beginsStatement(raw_.atHand().substr(1))) {
    raw_.skip(1);
    return;
  }
  named_.endPart();
  end_ = visible_;
  state_ = State::Text;
  isWhole_ = true;
  isMalformed_ = true;
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
