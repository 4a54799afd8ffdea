#include "exchange/body_cursor.h"

#include <algorithm>
#include <cstring>

#include "common/ascii.h"

namespace plenvorith {

void BodyCursor::refill() {
  consume();
  const std::string_view text = reader_.peek(kLookahead);
  begin_ = text.data();
  p_ = begin_;
  end_ = begin_ + text.size();
  isWhole_ = reader_.isWhole();
}

void BodyCursor::goTo(const BodyPlace& place) {
  reader_.goTo(place);
  begin_ = p_;  // nothing of what was looked at is left to be consumed
  refill();
}

std::string BodyCursor::takeKeyword() {
  (void)peek();
  const char* const end =
      std::find_first_of(p_, end_, kBehindKeyword.begin(), kBehindKeyword.end());
  std::string keyword(p_, end);
  p_ = end;
  return keyword;
}

/// Goes over a list of lists of numbers, as normals are. Gives how many parentheses are still open
/// where something else follows.
std::size_t BodyCursor::skipNumberLists() {
  const auto startsNumber = [](char c) { return isDigit(c) || c == '-' || c == '+' || c == '.'; };
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

void BodyCursor::skipParameter() {
  std::size_t depth = skipNumberLists();
  for (char c = peek(); p_ != end_; c = peek()) {
    if (c == '\'' || c == '"') {
      // A string is whole in what is handed out; a binary need not be.
      ++p_;
      while (peek() != c && p_ != end_) {
        ++p_;
      }
    } else if (c == '(') {
      ++depth;
    } else if (c == ')' || c == ',') {
      if (depth == 0) {
        return;
      }
      depth -= c == ')' ? 1 : 0;
    }
    p_ += p_ == end_ ? 0 : 1;
  }
}

bool BodyCursor::skipRecord() {
  if (!take('(')) {
    return false;
  }
  do {
    skipParameter();
  } while (take(','));
  return take(')');
}

}  // namespace plenvorith
