#include "exchange/references.h"

#include <algorithm>
#include <limits>

#include "exchange/entity_types.h"

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

constexpr std::uint64_t zigzag(std::uint64_t from, std::uint64_t to) {
  return to >= from ? (to - from) << 1U : ((from - to) << 1U) - 1;
}

constexpr std::uint64_t unzigzag(std::uint64_t from, std::uint64_t difference) {
  return (difference & 1U) == 0 ? from + (difference >> 1U) : from - ((difference + 1) >> 1U);
}

}  // namespace

void ReferenceScanner::put(std::uint64_t value) {
  for (; value >= 0x80; value >>= 7U) {
    store_->push_back(static_cast<std::uint8_t>(value | 0x80U));
  }
  store_->push_back(static_cast<std::uint8_t>(value));
}

bool ReferenceScanner::scan(StatementReader& reader, ReferenceStore& store) {
  store_ = &store;
  keywords_.clear();
  isComplex_ = false;
  isBalanced_ = true;
  levels_.clear();
  isBehindWord_ = false;
  epoch_ = 1;
  previous_ = 0;
  attribute_ = 0;
  lastAttribute_ = std::numeric_limits<std::uint64_t>::max();
  records_ = 0;
  {
    TokenReader tokens(reader);
    while (attribute_ <= lastAttribute_ && !tokens.isAtEnd()) {
      scanToken(tokens.next(), tokens);
    }
  }
  put(kEnd);
  const Parentheses rest = reader.skipBody();
  return isBalanced_ && levels_.size() + rest.opened == rest.closed;
}

void ReferenceScanner::scanToken(const Token& token, TokenReader& tokens) {
  switch (token.kind) {
    case Token::Kind::Open:
      open(tokens);
      break;
    case Token::Kind::Close:
      isBalanced_ = isBalanced_ && !levels_.empty();
      if (!levels_.empty()) {
        levels_.pop_back();
      }
      break;
    case Token::Kind::Comma:
      attribute_ += !levels_.empty() && levels_.back().group == Group::Record ? 1U : 0U;
      break;
    case Token::Kind::Reference:
      storeReference(token.number);
      break;
    case Token::Kind::Keyword:
      startWord(token);
      return;
    default:
      noteOther();
  }
  isBehindWord_ = false;
}

/// Of a word that starts a record, or else belongs to a parameter.
void ReferenceScanner::startWord(const Token& token) {
  isBehindWord_ = true;
  const bool isBehindAll = levels_.empty() && !keywords_.empty() && !token.isRest;
  if (!isInRecords() || isBehindAll) {
    noteOther();
    return;
  }
  keywords_ += keywords_.empty() || token.isRest ? "" : "(";
  keywords_ += token.text;
  keyword_ = token.isRest ? keyword_ + std::string(token.text) : std::string(token.text);
}

void ReferenceScanner::open(TokenReader& tokens) {
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
    isFace_ = kindOf(keyword_) == Kind::TriangulatedFace;
    if (!isComplex_ && isFace_) {
      lastAttribute_ = keyword_.ends_with("FACE") ? 4 : 1;  // geometric_link, coordinates
    }
  } else if (group == Group::List) {
    noteOther();
    if (levels_.back().group == Group::Record && isFace_) {
      while (tokens.skipParameters(1)) {
      }
      isBalanced_ = tokens.take(')') && isBalanced_;
      levels_.back().storedIn = 0;
      return;
    }
  }
  if (!levels_.empty()) {
    levels_.back().storedIn = 0;
  }
  levels_.push_back({group});
}

/// The list that is open holds something that is no reference.
void ReferenceScanner::noteOther() {
  if (levels_.empty() || levels_.back().group != Group::List || levels_.back().holdsMore) {
    return;
  }
  levels_.back().holdsMore = true;
  if (levels_.back().storedIn == epoch_) {
    put(kOther);
  }
}

void ReferenceScanner::storeReference(std::uint64_t number) {
  if (levels_.empty() || number == Token::kNoNumber) {
    return noteOther();
  }
  Level& level = levels_.back();
  const std::uint64_t difference = zigzag(previous_, number) << 2U;
  const std::uint64_t record = records_ == 0 ? 0 : records_ - 1;
  const std::uint64_t place = record * kMaxAttributes + std::min(attribute_, kMaxAttributes - 1);
  if (level.group != Group::List) {
    put(difference | kAttribute);
    put(place);
    ++epoch_;  // what follows in a list around this one is a new part of it
  } else if (level.storedIn != epoch_) {
    put(difference | kFirstInList);
    put(place);
    level.storedIn = epoch_;
    if (level.holdsMore) {
      put(kOther);
    }
  } else if (number != previous_) {
    put(difference | kNextInList);
  }
  previous_ = number;
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
