#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "exchange/statement_reader.h"

namespace plenvorith {

/// What a keyword ends with, in malformed instances too: all who read one have to find the same.
inline constexpr std::string_view kBehindKeyword = "(),";

/// A cursor on the body of the instance that a reader stands at. While it lives, the reader is not
/// used otherwise.
class BodyCursor {
 public:
  /// What is looked at without a look for more: longer numbers are none.
  static constexpr std::ptrdiff_t kLookahead = 1024;

  explicit BodyCursor(StatementReader& reader) : reader_(reader) {
    refill();
  }
  ~BodyCursor() {
    consume();
  }
  BodyCursor(const BodyCursor&) = delete;
  BodyCursor& operator=(const BodyCursor&) = delete;

  /// The next byte, which stays; 0 at the end of the body.
  [[nodiscard]] char peek() {
    if (end_ - p_ < kLookahead && !isWhole_) {
      refill();
    }
    return p_ == end_ ? '\0' : *p_;
  }

  /// Whether nothing is left. A string may hold any byte, 0 too.
  [[nodiscard]] bool isAtEnd() {
    (void)peek();
    return p_ == end_;
  }

  /// Goes over `c` if it is next.
  bool take(char c) {
    const bool isNext = peek() == c && p_ != end_;
    p_ += isNext ? 1 : 0;
    return isNext;
  }

  /// What is next: all of a number that `peek` was called before.
  [[nodiscard]] const char* position() const {
    return p_;
  }
  [[nodiscard]] const char* end() const {
    return end_;
  }
  void moveTo(const char* position) {
    p_ = position;
  }

  /// Where what is next stands.
  [[nodiscard]] BodyPlace place() {
    consume();
    return reader_.place();
  }

  /// Goes back, or forward, to a place in the body.
  void goTo(const BodyPlace& place);

  /// Goes over a keyword and gives it, the first characters of a very long one.
  std::string takeKeyword();

  /// Goes over a parameter, to the "," or ")" behind it.
  void skipParameter();

  /// Goes over the parameters of a record, from its "(" to behind its ")"; false if it has none.
  [[nodiscard]] bool skipRecord();

  /// Whether a list that is not empty is next.
  [[nodiscard]] bool isAtItems() {
    return peek() == '(' && end_ - p_ > 1 && p_[1] != ')';
  }

 private:
  void consume() {
    reader_.consume(static_cast<std::size_t>(p_ - begin_));
    begin_ = p_;
  }
  void refill();
  std::size_t skipNumberLists();

  StatementReader& reader_;
  bool isWhole_ = false;  // nothing comes behind what can be looked at
  const char* begin_ = nullptr;
  const char* p_ = nullptr;
  const char* end_ = nullptr;
};

}  // namespace plenvorith
