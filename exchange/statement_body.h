#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "exchange/byte_scan.h"
#include "exchange/raw_text.h"

namespace plenvorith {

/// Numbers with a "#" in front of them, by how many digits they have.
class NamedNumbers {
 public:
  /// Adds those in a part of a string, which may begin or end in one of them.
  void addPart(const char* p, const char* end);
  /// Says that what comes next belongs to another string.
  void endPart();

  /// Whether none of `count` numbers from a power of ten on is among them; all have as many digits.
  [[nodiscard]] bool leaveFree(std::uint64_t powerOfTen, std::uint64_t count) const;

 private:
  static constexpr std::size_t kMaxDigits = 18;

  // The least one of each number of digits; longer ones are no numbers of instances.
  std::array<std::uint64_t, kMaxDigits + 1> least_ = {};
  bool isOpen_ = false;  // the part before ended in a number
  std::uint64_t number_ = 0;
  std::size_t digits_ = 0;
};

/// A place in a body, to come back to.
struct BodyPlace {
  std::uint64_t offset = 0;  ///< in the file, of a place before it that is in no string or comment
  std::uint64_t ahead = 0;   ///< how many bytes of what is handed out lie between
};

/// The body of a statement of ISO 10303-21, up to its semicolon, piece by piece.
///
/// It is handed out without blanks, control characters and comments, other than in strings ('...',
/// an apostrophe inside is doubled), from which line ends are taken; a reference "#007" is written
/// "#7". If the keyword that it starts with has small letters, all letters become capital ones, other
/// than in strings. A slash that begins no comment means nothing and goes, too: it could begin one
/// once blanks are gone. A string of more than `kLongestString` bytes is handed out as an empty one.
///
/// A string has no end if a line in it begins with "#1=A" or with "ENDSEC;": the body ends there,
/// without the string, and is malformed. Binaries ("0F") are text like any other. The keyword of a
/// section is text with its semicolon if parameters follow, "A(#1,DATA;#2)".
///
/// Errors  a body that has no semicolon ends with the file, which notes what never ended.
/// Memory  one window, whatever the length of a body.
class StatementBody {
 public:
  static constexpr std::size_t kLongestString = 8192;

  /// The bodies are read of `raw`, which must outlive this.
  explicit StatementBody(RawText& raw);

  /// Starts with what comes next in the file.
  void start();

  /// Starts with nothing.
  void startEmpty();

  /// What comes next: `size` bytes or more, fewer only if the body ends with them. Ends in no
  /// string. Valid until this is used again.
  [[nodiscard]] std::string_view peek(std::size_t size) {
    if (visible_ - begin_ < size && !isWhole_) {
      fill(size);
    }
    return {window_.data() + begin_, visible_ - begin_};
  }

  /// Whether `peek` gives all that is left.
  [[nodiscard]] bool isWhole() const {
    return isWhole_;
  }

  /// Goes over bytes that `peek` gave.
  void consume(std::size_t size) {
    begin_ += size;
  }

  /// Whether what was read of this body has a string without an end.
  [[nodiscard]] bool isMalformed() const {
    return isMalformed_;
  }

  /// Where what comes next stands. What lies ahead of the place in the file is some ten thousand
  /// bytes at most where there are no strings and comments.
  [[nodiscard]] BodyPlace place() const;

  /// Goes on at a place in this body. Strings that lie ahead of it are counted again.
  void goTo(const BodyPlace& place);

  /// Goes over the rest and gives the parentheses in it, much faster than by a look at all of it.
  Parentheses skip();

  /// The number of strings that were emptied in what was handed out so far, of all bodies.
  [[nodiscard]] std::uint64_t emptiedStrings() const {
    return emptiedStrings_;
  }

  /// The numbers that strings name, "see #12", in what was read so far, of all bodies.
  [[nodiscard]] const NamedNumbers& namedInStrings() const {
    return named_;
  }

 private:
  /// The same place in the file and in the body.
  struct Mark {
    std::uint64_t offset = 0;
    std::uint64_t handedOut = 0;  // how much of the body, since the start, lies before it
  };

  enum class State { Text, Reference, Slash, Comment, Star, String, Apostrophe };

  void fill(std::size_t size);
  void write(std::size_t size);
  [[nodiscard]] bool startsWithSmallLetters() const;
  void makeRoom(std::size_t size);
  void normalise(std::size_t size);
  const char* copyRun(const char* p, const char* end);
  const char* copyString(const char* p, const char* end);
  bool normaliseSpecial(char c);
  void normaliseInText(char c);
  void passInComment(char c);
  bool normaliseInString(char c);
  bool skipZero(char c);
  void put(char c) {
    window_[end_++] = c;
  }
  bool pass(const char* behind);
  void passLineEnd();
  void putInString(char c);
  void endString();
  const char* skipPiece(const char* p, const char* end, Parentheses& counts);
  const char* skipInString(const char* p, const char* end);
  void failUnended();

  RawText& raw_;
  std::vector<char> window_;
  std::uint64_t start_ = 0;        // of the body in the file
  std::uint64_t windowStart_ = 0;  // how much of the body lies before the window
  Mark coming_;                    // the last one
  Mark passed_;                    // the one before, where that is still ahead
  std::size_t begin_ = 0;          // of what has not been consumed
  std::size_t visible_ = 0;        // end of what is handed out
  std::size_t end_ = 0;            // end of what is written, an unended string perhaps
  std::size_t stringStart_ = 0;    // in the window
  std::size_t stringSize_ = 0;     // what the string has with its apostrophes
  State state_ = State::Text;
  bool isWhole_ = true;    // the semicolon has been met
  bool zeros_ = false;     // met in a reference and not written yet
  bool isFirst_ = true;    // nothing of the body was looked at
  bool isRaised_ = false;  // letters become capital ones
  bool isMalformed_ = false;
  NamedNumbers named_;
  std::uint64_t emptiedStrings_ = 0;
};

}  // namespace plenvorith
