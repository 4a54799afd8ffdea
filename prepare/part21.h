#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/block_reader.h"

namespace plenvorith {

/// What `StatementReader::next` stands at.
enum class Statement {
  HeaderEntity,  ///< of the HEADER section, "FILE_NAME(...);"
  Instance,      ///< of a DATA section, "#12=TYPE(...);", several sections being one
  End,           ///< nothing follows, or nothing that can be read: see `error`
};

/// Reads the exchange structure of ISO 10303-21 statement by statement, in blocks of the file.
///
/// What stands before "ISO-10303-21;" and behind "END-ISO-10303-21;" is no part of it. Sections
/// other than HEADER and DATA are passed over, and so is what is neither an instance nor a keyword.
/// The instances in "&SCOPE ... ENDSCOPE" come one by one, before the one that the scope belongs
/// to.
///
/// The text of a statement is handed out without blanks, control characters and comments, other
/// than in strings ('...', an apostrophe inside is doubled) and binaries ("..."), from which line
/// ends are taken; a reference "#007" is written "#7". A string of more than `kLongestString` bytes
/// is handed out as an empty one.
///
/// Memory  two blocks, whatever the length of a statement.
class StatementReader {
 public:
  /// The kernel's reader refuses a whole file for a string of twice this length.
  static constexpr std::size_t kLongestString = 8192;

  explicit StatementReader(const std::string& path);

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const {
    return file_.isOpen();
  }

  /// Calls `hook` with the place in the file whenever a block was read.
  void onBlock(std::function<void(std::uint64_t)> hook);

  /// Goes to the next statement, over what is left of this one.
  [[nodiscard]] Statement next();

  /// Goes to the body of an instance, which stands at this offset of the file.
  void seekBody(std::uint64_t offset);

  /// The number of the instance, "#12" or "#0012" being 12.
  [[nodiscard]] std::uint64_t number() const {
    return number_;
  }

  /// Where the body of the instance stands in the file.
  [[nodiscard]] std::uint64_t offset() const {
    return offset_;
  }

  /// The keyword of the header entity; its body is the rest, "(...)".
  [[nodiscard]] const std::string& headerKeyword() const {
    return word_;
  }

  /// What is next of the body, up to its semicolon: `size` bytes or more, fewer only if the body
  /// ends with them. Ends in no string. Valid until the reader is used again.
  [[nodiscard]] std::string_view peek(std::size_t size = 1) {
    if (visible_ - begin_ < size && !bodyEnds_) {
      fill(size);
    }
    return {window_.data() + begin_, visible_ - begin_};
  }

  /// Whether `peek` gives all that is left of the body.
  [[nodiscard]] bool isWhole() const {
    return bodyEnds_;
  }

  /// Goes over bytes that `peek` gave.
  void consume(std::size_t size) {
    begin_ += size;
  }

  /// Goes over the rest of the body and gives the number of parentheses that open in it, strings
  /// aside that were not handed out yet. Much faster than a look at all of it.
  [[nodiscard]] std::uint64_t countOpened();

  /// The number of strings that were emptied in what was handed out so far.
  [[nodiscard]] std::uint64_t emptiedStrings() const {
    return emptiedStrings_;
  }

  /// What is wrong with the file, "a string never ends" for example; empty if nothing is.
  [[nodiscard]] const std::string& error() const {
    return error_;
  }

 private:
  enum class Section { None, Header, Data, Other };
  enum class State { Text, Reference, Slash, Comment, Star, String, Apostrophe, Binary };

  bool readBlock();
  bool ensureRaw(std::size_t count);
  int peekRaw();
  void skipRawComment();
  bool findStart();
  bool readName();
  void readWord();
  bool endScope();
  Statement startInstance();
  void startBody();
  std::uint64_t skipBody();
  void fill(std::size_t size);
  void makeRoom(std::size_t size);
  void normalise(std::size_t size);
  bool normaliseSpecial(char c);
  void endString();
  void fail(const char* what);
  void failUnended();

  BlockReader file_;
  std::function<void(std::uint64_t)> hook_;
  std::string_view raw_;         // a block of the file
  std::size_t rawBegin_ = 0;     // of what has not been looked at
  std::uint64_t rawOffset_ = 0;  // of the block's end in the file
  std::vector<char> window_;     // of the body
  std::size_t begin_ = 0;        // of what has not been consumed
  std::size_t visible_ = 0;      // end of what is handed out
  std::size_t end_ = 0;          // end of what is written, an unended string perhaps
  std::size_t stringStart_ = 0;  // in the window
  std::size_t stringSize_ = 0;   // what the string has with its apostrophes
  bool bodyEnds_ = true;         // its semicolon has been met
  State state_ = State::Text;
  bool zeros_ = false;  // met in a reference and not written yet
  Section section_ = Section::None;
  bool isStarted_ = false;
  bool isEnded_ = false;
  std::vector<std::uint64_t> scopes_;  // the instances that open scopes belong to
  std::uint64_t number_ = 0;
  std::uint64_t offset_ = 0;
  std::string word_;
  std::uint64_t emptiedStrings_ = 0;
  std::string error_;
};

}  // namespace plenvorith
