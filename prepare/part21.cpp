#include "prepare/part21.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// More than the longest string and anything that is asked for at once.
constexpr std::size_t kWindowSize = std::size_t{1} << 17;

/// At least as much is written at once, if the body has it.
constexpr std::size_t kWorthwhile = std::size_t{1} << 13;

/// Larger numbers of instances are in no file, and leave no room for new ones above them.
constexpr std::uint64_t kLargestNumber = 99'999'999'999'999'999;

constexpr std::string_view kStart = "ISO-10303-21";

constexpr bool isBlank(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}

constexpr bool isWordCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || isDigit(c) || c == '_' || c == '-' ||
         c == '!' || c == '&';
}

/// Whether something other than plain text may start at `p`, of which one byte more can be read.
constexpr bool isSpecial(const char* p) {
  const char c = p[0];
  return isBlank(c) || c == '\'' || c == '"' || c == '/' || c == ';' || (c == '#' && p[1] == '0');
}

/// Whether a string, a binary, a comment or the end of a statement may start here.
constexpr bool isMark(char c) {
  return c == '\'' || c == '"' || c == '/' || c == ';';
}

/// Sixteen bytes, compared at once: a byte of the result is 255 or 0.
using Bytes [[gnu::vector_size(16)]] = unsigned char;

Bytes loadBytes(const char* p) {
  Bytes bytes;
  std::memcpy(&bytes, p, sizeof bytes);
  return bytes;
}

bool holdsAny(Bytes flags) {
  std::array<std::uint64_t, 2> halves = {};
  std::memcpy(halves.data(), &flags, sizeof flags);
  return (halves[0] | halves[1]) != 0;
}

Bytes equal(Bytes bytes, char wanted) {
  // Comparing gives numbers with a sign, which are the same bits.
  return reinterpret_cast<Bytes>(bytes == static_cast<unsigned char>(wanted));
}

/// The first byte that is special; `end` or the byte before it if none is.
const char* findSpecial(const char* p, const char* end) {
  constexpr std::ptrdiff_t kSize = sizeof(Bytes);
  while (end - p > kSize) {
    const Bytes bytes = loadBytes(p);
    const Bytes blank = reinterpret_cast<Bytes>(bytes <= static_cast<unsigned char>(' '));
    const Bytes zero = equal(bytes, '#') & equal(loadBytes(p + 1), '0');
    if (holdsAny(blank | equal(bytes, '\'') | equal(bytes, '"') | equal(bytes, '/') |
                 equal(bytes, ';') | zero)) {
      break;
    }
    p += kSize;
  }
  while (end - p > 1 && !isSpecial(p)) {
    ++p;
  }
  return p;
}

/// The first mark, or `end`. Adds the number of parentheses that open before it.
const char* findMark(const char* p, const char* end, std::uint64_t& opened) {
  constexpr std::ptrdiff_t kSize = sizeof(Bytes);
  while (end - p >= kSize) {
    // Counts in bytes as long as none overflows.
    Bytes counts = {};
    int rounds = 255;
    for (; rounds > 0 && end - p >= kSize; --rounds, p += kSize) {
      const Bytes bytes = loadBytes(p);
      if (holdsAny(equal(bytes, '\'') | equal(bytes, '"') | equal(bytes, '/') |
                   equal(bytes, ';'))) {
        break;
      }
      counts -= equal(bytes, '(');
    }
    for (std::size_t i = 0; i < sizeof counts; ++i) {
      opened += counts[i];
    }
    if (rounds > 0) {
      break;
    }
  }
  for (; p != end && !isMark(*p); ++p) {
    opened += *p == '(' ? 1 : 0;
  }
  return p;
}

}  // namespace

StatementReader::StatementReader(const std::string& path) : file_(path), window_(kWindowSize) {}

void StatementReader::onBlock(std::function<void(std::uint64_t)> hook) {
  hook_ = std::move(hook);
}

void StatementReader::fail(const char* what) {
  if (error_.empty()) {
    error_ = what;
  }
  bodyEnds_ = true;
  isEnded_ = true;
}

void StatementReader::failUnended() {
  switch (state_) {
    case State::String:
      return fail("a string never ends");
    case State::Binary:
      return fail("a binary never ends");
    case State::Comment:
    case State::Star:
      return fail("a comment never ends");
    default:
      return fail("an instance never ends");
  }
}

/// Reads behind what has not been looked at, which moves to the front; false at the end.
bool StatementReader::readBlock() {
  const std::size_t kept = raw_.size() - rawBegin_;
  const bool isMore = file_.next(raw_, kept);
  rawBegin_ = 0;
  rawOffset_ += raw_.size() - kept;
  if (file_.hasFailed()) {
    fail("cannot be read to its end");
  }
  if (hook_) {
    hook_(rawOffset_);
  }
  return isMore;
}

bool StatementReader::ensureRaw(std::size_t count) {
  while (raw_.size() - rawBegin_ < count) {
    if (!readBlock()) {
      return false;
    }
  }
  return true;
}

/// The next byte that is no blank and in no comment, which stays; -1 at the end of the file.
int StatementReader::peekRaw() {
  while (ensureRaw(1)) {
    const char c = raw_[rawBegin_];
    if (isBlank(c)) {
      ++rawBegin_;
    } else if (c == '/' && ensureRaw(2) && raw_[rawBegin_ + 1] == '*') {
      skipRawComment();
    } else {
      return static_cast<unsigned char>(c);
    }
  }
  return -1;
}

void StatementReader::skipRawComment() {
  rawBegin_ += 2;
  while (ensureRaw(2)) {
    const char* const start = raw_.data() + rawBegin_;
    const void* const star = std::memchr(start, '*', raw_.size() - rawBegin_ - 1);
    if (star == nullptr) {
      rawBegin_ = raw_.size() - 1;
      continue;
    }
    const char* const found = static_cast<const char*>(star);
    rawBegin_ += static_cast<std::size_t>(found - start);
    if (found[1] == '/') {
      rawBegin_ += 2;
      return;
    }
    ++rawBegin_;
  }
  rawBegin_ = raw_.size();
  fail("a comment never ends");
}

/// Goes behind "ISO-10303-21;", which has to be there.
bool StatementReader::findStart() {
  bool isEndMark = false;  // "END-" stands before what is looked at
  while (ensureRaw(kStart.size() + 1)) {
    const std::string_view rest(raw_.data() + rawBegin_, raw_.size() - rawBegin_);
    const std::size_t found = rest.find(kStart);
    if (found == std::string_view::npos) {
      // What is kept may be the byte before the word and all of it but one.
      rawBegin_ = raw_.size() - kStart.size();
      continue;
    }
    isEndMark = found > 0 && rest[found - 1] == '-';
    rawBegin_ += found + kStart.size();
    if (!isEndMark && peekRaw() == ';') {
      ++rawBegin_;
      return true;
    }
  }
  return false;
}

/// Reads "#12=", the first of which is next.
bool StatementReader::readName() {
  ++rawBegin_;
  bool hasDigits = false;
  number_ = 0;
  int c = peekRaw();
  for (; c >= 0 && isDigit(static_cast<char>(c)); c = peekRaw()) {
    number_ = number_ * 10 + static_cast<std::uint64_t>(c - '0');
    hasDigits = true;
    if (number_ > kLargestNumber) {
      fail("the number of an instance is too large");
      return false;
    }
    ++rawBegin_;
  }
  if (!hasDigits || c != '=') {
    return false;
  }
  ++rawBegin_;
  return true;
}

/// Reads a keyword behind blanks; what is longer than any keyword is cut.
void StatementReader::readWord() {
  constexpr std::size_t kLongest = 256;
  word_.clear();
  (void)peekRaw();  // skips blanks
  while (ensureRaw(1) && isWordCharacter(raw_[rawBegin_])) {
    if (word_.size() < kLongest) {
      word_ += raw_[rawBegin_];
    }
    ++rawBegin_;
  }
}

Statement StatementReader::next() {
  if (!bodyEnds_) {
    (void)skipBody();
  }
  if (!isStarted_) {
    isStarted_ = true;
    if (!findStart()) {
      fail("not a STEP file");
    }
  }
  while (!isEnded_) {
    const int c = peekRaw();
    if (c < 0) {
      if (!scopes_.empty()) {
        fail("a scope never ends");
      }
      isEnded_ = true;
    } else if (c == '#') {
      const bool isInstance = readName() && section_ == Section::Data;
      if (isInstance && peekRaw() == '&') {
        readWord();
        scopes_.push_back(number_);
      } else if (isInstance) {
        return startInstance();
      } else if (!isEnded_) {
        startBody();
        (void)skipBody();
      }
    } else {
      readWord();
      if (word_ == "ENDSCOPE" && section_ == Section::Data) {
        if (endScope()) {
          return startInstance();
        }
        continue;
      }
      startBody();
      if (word_ == "HEADER") {
        section_ = Section::Header;
      } else if (word_ == "DATA") {
        section_ = Section::Data;
      } else if (word_ == "ENDSEC") {
        section_ = Section::None;
      } else if (word_ == "ANCHOR" || word_ == "REFERENCE" || word_ == "SIGNATURE") {
        section_ = section_ == Section::None ? Section::Other : section_;
      } else if (word_ == "END-ISO-10303-21") {
        isEnded_ = true;
        bodyEnds_ = true;
        continue;
      } else if (section_ == Section::Header && !word_.empty()) {
        return Statement::HeaderEntity;
      }
      (void)skipBody();
    }
  }
  return Statement::End;
}

/// Goes over the export list behind ENDSCOPE, "/#1,#2/", to the body of the scope's instance.
bool StatementReader::endScope() {
  if (scopes_.empty()) {
    return false;
  }
  number_ = scopes_.back();
  scopes_.pop_back();
  if (peekRaw() == '/') {
    ++rawBegin_;
    int c = peekRaw();
    for (; c >= 0 && c != '/' && c != ';'; c = peekRaw()) {
      ++rawBegin_;
    }
    rawBegin_ += c == '/' ? 1 : 0;
  }
  return true;
}

Statement StatementReader::startInstance() {
  if (peekRaw() < 0) {
    fail("an instance never ends");
    return Statement::End;
  }
  offset_ = rawOffset_ - (raw_.size() - rawBegin_);
  startBody();
  return Statement::Instance;
}

void StatementReader::seekBody(std::uint64_t offset) {
  const std::uint64_t blockStart = rawOffset_ - raw_.size();
  if (offset >= blockStart && offset < rawOffset_) {
    rawBegin_ = static_cast<std::size_t>(offset - blockStart);
  } else if (file_.seek(offset)) {
    raw_ = {};
    rawBegin_ = 0;
    rawOffset_ = offset;
  } else {
    fail("cannot be read twice");
    return;
  }
  offset_ = offset;
  startBody();
}

std::uint64_t StatementReader::countOpened() {
  const auto visible = static_cast<std::uint64_t>(
      std::count(window_.begin() + static_cast<std::ptrdiff_t>(begin_),
                 window_.begin() + static_cast<std::ptrdiff_t>(visible_), '('));
  begin_ = visible_;
  return bodyEnds_ ? visible : visible + skipBody();
}

void StatementReader::startBody() {
  begin_ = 0;
  visible_ = 0;
  end_ = 0;
  state_ = State::Text;
  bodyEnds_ = false;
}

/// Goes over the rest of the body without writing it. Gives the number of parentheses that open in
/// it.
std::uint64_t StatementReader::skipBody() {
  std::uint64_t opened = 0;
  if (state_ == State::Apostrophe || state_ == State::Reference) {
    state_ = State::Text;
  }
  while (!bodyEnds_) {
    if (rawBegin_ == raw_.size() && !readBlock()) {
      failUnended();
      break;
    }
    const char* const first = raw_.data() + rawBegin_;
    const char* const end = raw_.data() + raw_.size();
    const char* p = first;
    const auto size = static_cast<std::size_t>(end - p);
    switch (state_) {
      case State::String:
      case State::Binary:
      case State::Comment: {
        const char mark = state_ == State::String ? '\'' : state_ == State::Binary ? '"' : '*';
        const void* const found = std::memchr(p, mark, size);
        p = found == nullptr ? end : static_cast<const char*>(found) + 1;
        if (found != nullptr) {
          state_ = state_ == State::Comment ? State::Star : State::Text;
        }
        break;
      }
      case State::Star:
        state_ = *p == '/' ? State::Text : *p == '*' ? State::Star : State::Comment;
        ++p;
        break;
      case State::Slash:
        state_ = *p == '*' ? State::Comment : State::Text;
        p += *p == '*' ? 1 : 0;
        break;
      default:
        p = findMark(p, end, opened);
        if (p != end) {
          bodyEnds_ = *p == ';';
          state_ = *p == '\''  ? State::String
                   : *p == '"' ? State::Binary
                   : *p == '/' ? State::Slash
                               : State::Text;
          ++p;
        }
    }
    rawBegin_ += static_cast<std::size_t>(p - first);
  }
  return opened;
}

/// Writes more of the body, until `size` bytes can be handed out or the body ends.
void StatementReader::fill(std::size_t size) {
  makeRoom(size);
  while (visible_ - begin_ < size && !bodyEnds_) {
    if (rawBegin_ == raw_.size() && !readBlock()) {
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
void StatementReader::makeRoom(std::size_t size) {
  std::memmove(window_.data(), window_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  visible_ -= begin_;
  stringStart_ -= std::min(stringStart_, begin_);
  begin_ = 0;
  const std::size_t needed = std::max(size, end_) + 2 * kLongestString;
  if (needed > window_.size()) {
    window_.resize(2 * needed);
  }
}

/// Writes from the block until it ends, or the room, or the body, or `size` bytes can be handed
/// out.
void StatementReader::normalise(std::size_t size) {
  const char* p = raw_.data() + rawBegin_;
  const char* const rawEnd = raw_.data() + raw_.size();
  while (p != rawEnd && !bodyEnds_ && window_.size() - end_ >= 2 && visible_ - begin_ < size) {
    const std::size_t room = std::min(window_.size() - end_ - 1, size);
    const char* const end = p + std::min(rawEnd - p, static_cast<std::ptrdiff_t>(room));
    const char* run = p;
    if (state_ == State::Text) {
      run = findSpecial(p, end);
    } else if (state_ == State::String || state_ == State::Binary) {
      const char quote = state_ == State::String ? '\'' : '"';
      while (run != end && *run != quote && *run != '\n' && *run != '\r') {
        ++run;
      }
    }
    const auto runSize = static_cast<std::size_t>(run - p);
    if (state_ == State::String) {
      stringSize_ += runSize;
    }
    if (state_ != State::String || stringSize_ <= kLongestString + 1) {
      std::memcpy(window_.data() + end_, p, runSize);
      end_ += runSize;
    } else {
      end_ = stringStart_;
    }
    p = run;
    if (state_ == State::Text || state_ == State::Binary) {
      visible_ = end_;
    }
    if (p != end && normaliseSpecial(*p)) {
      ++p;
    }
  }
  rawBegin_ = static_cast<std::size_t>(p - raw_.data());
}

/// Writes one byte by the state that the text is in; false if it has to be looked at again, in
/// another state.
bool StatementReader::normaliseSpecial(char c) {
  const auto put = [this](char byte) { window_[end_++] = byte; };
  const auto putInString = [this, put](char byte) {
    if (++stringSize_ <= kLongestString + 2) {
      put(byte);
    }
  };
  switch (state_) {
    case State::Text:
      if (c == ';') {
        bodyEnds_ = true;
      } else if (c == '\'') {
        state_ = State::String;
        stringStart_ = end_;
        stringSize_ = 1;
        put(c);
        return true;
      } else if (c == '/') {
        state_ = State::Slash;
      } else if (!isBlank(c)) {
        state_ = c == '"' ? State::Binary : c == '#' ? State::Reference : State::Text;
        zeros_ = false;
        put(c);
      }
      break;
    case State::Reference:
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
    case State::Slash:
      state_ = c == '*' ? State::Comment : State::Text;
      if (c != '*') {
        put('/');
      }
      visible_ = end_;
      return c == '*';
    case State::Comment:
      state_ = c == '*' ? State::Star : State::Comment;
      return true;
    case State::Star:
      state_ = c == '/' ? State::Text : c == '*' ? State::Star : State::Comment;
      return true;
    case State::String:
      if (c == '\'') {
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
      break;
  }
  visible_ = end_;
  return true;
}

/// Hands a whole string out, or an empty one if it is too long.
void StatementReader::endString() {
  if (stringSize_ > kLongestString + 2) {
    end_ = stringStart_;
    window_[end_++] = '\'';
    window_[end_++] = '\'';
    ++emptiedStrings_;
  }
  visible_ = end_;
  state_ = State::Text;
}

}  // namespace plenvorith
