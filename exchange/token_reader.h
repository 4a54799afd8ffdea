#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "exchange/statement_reader.h"

namespace plenvorith {

/// A token of the body of an instance (ISO 10303-21).
struct Token {
  enum class Kind : std::uint8_t {
    End,  ///< nothing is left
    Open,
    Close,
    Comma,
    Reference,
    String,
    Keyword,
    Other,  ///< a number, a binary, an enumeration, "$", "*", or what is none of all
  };
  static constexpr std::uint64_t kNoNumber = std::numeric_limits<std::uint64_t>::max();

  Kind kind = Kind::End;
  bool isRest = false;    ///< goes on with the token before, which is longer than what is at hand
  std::string_view text;  ///< as it stands; valid until the reader is used again
  std::uint64_t number = 0;  ///< of a reference; `kNoNumber` if no instance has it
};

/// Reads the body of the instance that a reader stands at, of any length, token by token or byte by
/// byte. While this lives, the reader is not used otherwise.
class TokenReader {
 public:
  /// What is at hand at least, if the body has it, wherever a byte is looked at.
  static constexpr std::ptrdiff_t kLookahead = 1024;

  explicit TokenReader(StatementReader& reader) : reader_(reader) {
    refill(kLookahead);
  }
  ~TokenReader() {
    consume();
  }
  TokenReader(const TokenReader&) = delete;
  TokenReader& operator=(const TokenReader&) = delete;

  /// Takes the next token. Strings are whole; of other ones that are longer than what is at hand a
  /// part comes first and the rest with the calls that follow.
  [[nodiscard]] Token next();

  /// The next byte, which stays; 0 at the end of the body.
  [[nodiscard]] char peek() {
    if (end_ - p_ < kLookahead && !isWhole_) {
      refill(kLookahead);
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

  /// What is at hand. It is more than before, if the body has more, after `readMore`.
  [[nodiscard]] const char* position() const {
    return p_;
  }
  [[nodiscard]] const char* end() const {
    return end_;
  }
  void moveTo(const char* position) {
    p_ = position;
  }
  bool readMore();

  /// Where what is next stands.
  [[nodiscard]] BodyPlace place() {
    consume();
    return reader_.place();
  }

  /// Goes back, or forward, to a place in the body.
  void goTo(const BodyPlace& place);

  /// Goes over a keyword and gives it; an empty one where something else is next.
  std::string takeKeyword();

  /// Goes over a parameter, to the "," or ")" behind it.
  void skipParameter();

  /// Goes over as many parameters and the commas behind them; false where one is missing.
  [[nodiscard]] bool skipParameters(int count);

  /// Goes over the parameters of a record, from its "(" to behind its ")"; false if it has none.
  [[nodiscard]] bool skipRecord();

  /// Goes into the parameters of the record with this keyword: of a simple instance, or of a complex
  /// one. False if there is none.
  [[nodiscard]] bool enterRecord(std::string_view keyword, bool isComplex);

  /// Whether a list that is not empty is next.
  [[nodiscard]] bool isAtItems() {
    return peek() == '(' && end_ - p_ > 1 && p_[1] != ')';
  }

 private:
  void consume() {
    reader_.consume(static_cast<std::size_t>(p_ - begin_));
    begin_ = p_;
  }
  void refill(std::ptrdiff_t size);
  Token takeRun(Token::Kind kind, bool isRest);
  Token takeReference();
  Token takeString();
  Token tokenTo(Token::Kind kind, const char* end);
  std::int64_t skipNumberLists();

  StatementReader& reader_;
  bool isWhole_ = false;                // nothing comes behind what is at hand
  Token::Kind cut_ = Token::Kind::End;  // the kind of the token whose rest is next
  const char* begin_ = nullptr;
  const char* p_ = nullptr;
  const char* end_ = nullptr;
};

}  // namespace plenvorith
