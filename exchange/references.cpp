#include "exchange/references.h"

#include <algorithm>

#include "common/ascii.h"
#include "exchange/statement_reader.h"

namespace plenvorith {
namespace {

// A reference is stored as the difference to the one before it, times four, plus one of these. The
// first two are followed by the place of the attribute.
constexpr std::uint64_t kAttribute = 0;
constexpr std::uint64_t kFirstInList = 1;
constexpr std::uint64_t kNextInList = 2;
constexpr std::uint64_t kNote = 3;  // no difference: one of the two below
constexpr std::uint64_t kOther = 0 << 2U | kNote;
constexpr std::uint64_t kEnd = 1 << 2U | kNote;

/// Record times this plus attribute is the place of an attribute.
constexpr std::uint64_t kMaxAttributes = 1024;

/// Longer keywords and longer lists of them are in no schema.
constexpr std::size_t kLongestKeywords = 4096;

constexpr std::uint64_t zigzag(std::uint64_t from, std::uint64_t to) {
  return to >= from ? (to - from) << 1U : ((from - to) << 1U) - 1;
}

constexpr std::uint64_t unzigzag(std::uint64_t from, std::uint64_t difference) {
  return (difference & 1U) == 0 ? from + (difference >> 1U) : from - ((difference + 1) >> 1U);
}

constexpr bool startsWord(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '!';
}

constexpr bool isInWord(char c) {
  return startsWord(c) || isDigit(c) || c == '_' || c == '-';
}

}  // namespace

void ReferenceScanner::start(ReferenceStore& store) {
  store_ = &store;
  keywords_.clear();
  isComplex_ = false;
  levels_.clear();
  token_ = Token::None;
  isBehindWord_ = false;
  previous_ = 0;
  attribute_ = 0;
  records_ = 0;
}

void ReferenceScanner::put(std::uint64_t value) {
  for (; value >= 0x80; value >>= 7U) {
    store_->push_back(static_cast<std::uint8_t>(value | 0x80U));
  }
  store_->push_back(static_cast<std::uint8_t>(value));
}

void ReferenceScanner::scan(std::string_view piece) {
  const char* p = piece.data();
  const char* const end = p + piece.size();
  while (p != end) {
    if (token_ != Token::None) {
      p = scanToken(p, end);
      continue;
    }
    const char c = *p++;
    switch (c) {
      case '(':
        open();
        break;
      case ')':
        if (!levels_.empty()) {
          levels_.pop_back();
        }
        break;
      case ',':
        if (!levels_.empty() && levels_.back().group == Group::Record) {
          ++attribute_;
        }
        break;
      case '#':
        token_ = Token::Reference;
        number_ = 0;
        break;
      case '\'':
      case '"':
        token_ = c == '"' ? Token::Binary : Token::String;
        noteOther();
        break;
      default:
        if (startsWord(c)) {
          token_ = Token::Word;
          --p;
          // A keyword that starts a record; every other one belongs to a parameter.
          if (levels_.empty() || levels_.back().group == Group::Complex) {
            keywords_ += keywords_.empty() ? "" : "(";
          } else {
            noteOther();
          }
        } else {
          noteOther();
        }
    }
    isBehindWord_ = false;
  }
}

/// Goes on with a token, to its end or that of the piece.
const char* ReferenceScanner::scanToken(const char* p, const char* end) {
  const char* const begin = p;
  switch (token_) {
    case Token::Reference:
      for (; p != end && isDigit(*p); ++p) {
        number_ = number_ * 10 + static_cast<std::uint64_t>(*p - '0');
      }
      if (p != end) {
        token_ = Token::None;
        storeReference();
      }
      break;
    case Token::Word:
      p = std::find_if_not(p, end, isInWord);
      if ((levels_.empty() || levels_.back().group == Group::Complex) &&
          keywords_.size() < kLongestKeywords) {
        keywords_.append(begin, p);
      }
      if (p != end) {
        token_ = Token::None;
        isBehindWord_ = true;
      }
      break;
    default:
      p = std::find(p, end, token_ == Token::String ? '\'' : '"');
      if (p != end) {
        token_ = Token::None;
        ++p;
      }
  }
  return p;
}

void ReferenceScanner::open() {
  Group group = Group::List;
  if (levels_.empty()) {
    group = isBehindWord_ ? Group::Record : Group::Complex;
    isComplex_ = isComplex_ || !isBehindWord_;
  } else if (levels_.back().group == Group::Complex) {
    group = Group::Record;
  } else if (isBehindWord_) {
    group = Group::Parameters;
  }
  if (group == Group::Record) {
    ++records_;
    attribute_ = 0;
  } else if (group == Group::List) {
    noteOther();
  }
  if (!levels_.empty()) {
    levels_.back().isStored = false;
  }
  levels_.push_back({group});
}

/// The list that is open holds something that is no reference.
void ReferenceScanner::noteOther() {
  if (levels_.empty() || levels_.back().group != Group::List || levels_.back().holdsMore) {
    return;
  }
  levels_.back().holdsMore = true;
  if (levels_.back().isStored) {
    put(kOther);
  }
}

void ReferenceScanner::storeReference() {
  if (number_ <= kLargestNumber) {
    largestNumber_ = std::max(largestNumber_, number_);
  }
  if (levels_.empty()) {
    return;
  }
  Level& level = levels_.back();
  const std::uint64_t difference = zigzag(previous_, number_) << 2U;
  const std::uint64_t record = records_ == 0 ? 0 : records_ - 1;
  const std::uint64_t place = record * kMaxAttributes + std::min(attribute_, kMaxAttributes - 1);
  if (level.group != Group::List) {
    put(difference | kAttribute);
    put(place);
    // What follows in a list around this one is a new part of it.
    for (Level& outer : levels_) {
      outer.isStored = false;
    }
  } else if (!level.isStored) {
    put(difference | kFirstInList);
    put(place);
    level.isStored = true;
    if (level.holdsMore) {
      put(kOther);
    }
  } else if (number_ != previous_) {
    put(difference | kNextInList);
  }
  previous_ = number_;
}

void ReferenceScanner::finish() {
  if (token_ == Token::Reference) {
    storeReference();
  }
  put(kEnd);
}

std::uint64_t ReferenceWalker::take() {
  std::uint64_t value = 0;
  unsigned shift = 0;
  std::uint8_t byte = 0;
  do {
    byte = *place_;
    ++place_;
    value |= std::uint64_t{byte & 0x7FU} << shift;
    shift += 7;
  } while (byte >= 0x80);
  return value;
}

bool ReferenceWalker::next(Reference& reference) {
  const std::uint64_t value = take();
  if (value == kEnd) {
    return false;
  }
  const std::uint64_t code = value & 3U;
  if (value == kOther) {
    current_.kind = Reference::Kind::Other;
  } else {
    current_.number = unzigzag(current_.number, value >> 2U);
    current_.kind = code == kAttribute ? Reference::Kind::Attribute : Reference::Kind::ListItem;
  }
  if (code == kAttribute || code == kFirstInList) {
    const std::uint64_t place = take();
    current_.record = static_cast<std::uint32_t>(place / kMaxAttributes);
    current_.attribute = static_cast<std::uint32_t>(place % kMaxAttributes);
    current_.list += code == kFirstInList ? 1 : 0;
  }
  reference = current_;
  return true;
}

}  // namespace plenvorith
