#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "exchange/raw_text.h"
#include "exchange/statement_body.h"

namespace plenvorith {

/// Larger numbers of instances are in no file, and leave no room for new ones above them.
inline constexpr std::uint64_t kLargestNumber = 99'999'999'999'999'999;

/// What `StatementReader::next` stands at.
enum class Statement {
  HeaderEntity,  ///< of the HEADER section, "FILE_NAME(...);"
  Instance,      ///< of a DATA section, "#12=TYPE(...);", several sections being one
  End,           ///< nothing follows, or nothing that can be read: see `error`
};

/// Reads the exchange structure of ISO 10303-21 statement by statement, in blocks of the file.
///
/// What stands before "ISO-10303-21;" and behind "END-ISO-10303-21;" is no part of it. The mark of
/// another part of the standard, "ISO-10303-28;", counts where the file begins with it. Sections
/// other than HEADER and DATA are passed over as text, up to "ENDSEC;": their resources may hold
/// apostrophes and "/*". Behind anything else that is no instance, reading goes on at the next "#1=",
/// of which there may be more behind a DATA section that seemed to end.
/// Keywords count in any case. The instances in "&SCOPE ... ENDSCOPE" come one by one, before the one
/// that the scope belongs to.
///
/// What the text of a statement is handed out as, `StatementBody` tells.
///
/// Memory  two blocks, whatever the length of a statement.
class StatementReader {
 public:
  explicit StatementReader(const std::string& path) : raw_(path), body_(raw_) {}
  StatementReader(const StatementReader&) = delete;
  StatementReader& operator=(const StatementReader&) = delete;

  /// Whether the file could be opened.
  [[nodiscard]] bool isOpen() const {
    return raw_.isOpen();
  }

  /// Calls `hook` with the place in the file whenever a block was read.
  void onBlock(std::function<void(std::uint64_t)> hook) {
    raw_.onBlock(std::move(hook));
  }

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

  /// The keyword of the header entity, in capital letters; its body is the rest, "(...)".
  [[nodiscard]] const std::string& headerKeyword() const {
    return word_;
  }

  /// How the body begins as it stands in the file, with what comes behind it; as long as nothing of
  /// it was looked at otherwise.
  [[nodiscard]] std::string_view ahead() const {
    return raw_.atHand();
  }

  /// What is next of the body, up to its semicolon: `size` bytes or more, fewer only if the body
  /// ends with them. Ends in no string. Valid until the reader is used again.
  [[nodiscard]] std::string_view peek(std::size_t size = 1) {
    return body_.peek(size);
  }

  /// Whether `peek` gives all that is left of the body.
  [[nodiscard]] bool isWhole() const {
    return body_.isWhole();
  }

  /// Whether what was read of the body has a string without an end.
  [[nodiscard]] bool isMalformed() const {
    return body_.isMalformed();
  }

  /// Goes over bytes that `peek` gave.
  void consume(std::size_t size) {
    body_.consume(size);
  }

  /// Where what is next of the body stands.
  [[nodiscard]] BodyPlace place() const {
    return body_.place();
  }

  /// Goes back, or forward, to a place in the body.
  void goTo(const BodyPlace& place) {
    body_.goTo(place);
  }

  /// Goes over the rest of the body and gives the parentheses in it, much faster than by a look at
  /// all of it.
  [[nodiscard]] Parentheses skipBody() {
    return body_.skip();
  }

  /// The number of strings that were emptied in what was handed out so far.
  [[nodiscard]] std::uint64_t emptiedStrings() const {
    return body_.emptiedStrings();
  }

  /// The numbers that strings named so far.
  [[nodiscard]] const NamedNumbers& namedInStrings() const {
    return body_.namedInStrings();
  }

  /// What is wrong with the file, "a string never ends" for example; empty if nothing is.
  [[nodiscard]] const std::string& error() const {
    return raw_.error();
  }

 private:
  enum class Section { None, Header, Data, Other };

  void fail(const char* what);
  bool takeOtherMark();
  bool findStart();
  std::optional<Statement> takeNamed();
  std::optional<Statement> takeWord();
  std::optional<Statement> takeInstance();
  std::optional<Statement> takeJunk();
  bool readName();
  void readWord();
  bool enterSection();
  bool endScope();
  Statement startInstance();
  void skipStatement();
  void skipSection();

  RawText raw_;
  StatementBody body_;
  Section section_ = Section::None;
  bool hasData_ = false;
  bool isStarted_ = false;
  bool isEnded_ = false;
  std::vector<std::uint64_t> scopes_;  // the instances that open scopes belong to
  std::uint64_t number_ = 0;
  std::uint64_t offset_ = 0;
  std::string word_;
};

}  // namespace plenvorith
