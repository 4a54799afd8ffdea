#include "prepare/rewrite_instance.h"

#include <string>
#include <string_view>
#include <vector>

#include "common/ascii.h"
#include "exchange/body_cursor.h"

namespace plenvorith {
namespace {

using IsDropped = std::function<bool(std::uint64_t)>;

/// Copies a body token by token, and leaves references out of lists.
class Filter {
 public:
  Filter(StatementReader& reader, const IsDropped& isDropped, OutputFile& output)
      : cursor_(reader), isDropped_(isDropped), output_(output) {}

  void copyAll() {
    while (!cursor_.isAtEnd()) {
      copyToken();
    }
  }

  void copyAsShapeRepresentation();

 private:
  /// An open parenthesis. In a list the commas are written only between what is kept.
  struct Level {
    bool isList = false;
    bool isFirst = true;
  };

  void copyToken();
  void copyString(char quote);
  void startItem();
  bool takeReference(std::uint64_t& number);
  void copyParameter();

  BodyCursor cursor_;
  const IsDropped& isDropped_;
  OutputFile& output_;
  std::vector<Level> levels_;
  bool isBehindWord_ = false;
};

/// Writes the comma in front of an item of a list, unless it is the first that is kept.
void Filter::startItem() {
  if (levels_.empty() || !levels_.back().isList) {
    return;
  }
  if (!levels_.back().isFirst) {
    output_.put(',');
  }
  levels_.back().isFirst = false;
}

bool Filter::takeReference(std::uint64_t& number) {
  number = 0;
  if (!cursor_.take('#')) {
    return false;
  }
  while (isDigit(cursor_.peek())) {
    number = number * 10 + static_cast<std::uint64_t>(cursor_.peek() - '0');
    (void)cursor_.take(cursor_.peek());
  }
  return true;
}

void Filter::copyString(char quote) {
  // An apostrophe right behind one is doubled, and the string goes on.
  while (cursor_.take(quote)) {
    output_.put(quote);
    while (!cursor_.isAtEnd() && cursor_.peek() != quote) {
      output_.put(cursor_.peek());
      (void)cursor_.take(cursor_.peek());
    }
    if (cursor_.take(quote)) {
      output_.put(quote);
    }
  }
}

void Filter::copyToken() {
  const char c = cursor_.peek();
  const bool wasBehindWord = isBehindWord_;
  isBehindWord_ = false;
  if (c == '#') {
    std::uint64_t number = 0;
    (void)takeReference(number);
    const bool isInList = !levels_.empty() && levels_.back().isList;
    if (!isInList || !isDropped_(number)) {
      startItem();
      output_.put('#');
      output_.put(number);
    }
    return;
  }
  if (c == ')') {
    if (!levels_.empty()) {
      levels_.pop_back();
    }
    output_.put(c);
    (void)cursor_.take(c);
    return;
  }
  if (c == ',') {
    (void)cursor_.take(c);
    if (levels_.empty() || !levels_.back().isList) {
      output_.put(c);
    }
    return;
  }
  if (c == '(') {
    // The outermost parenthesis of a complex instance holds records, any other one without a
    // keyword before it is a list.
    if (!wasBehindWord) {
      startItem();
    }
    levels_.push_back({!wasBehindWord && !levels_.empty(), true});
    output_.put(c);
    (void)cursor_.take(c);
    return;
  }
  startItem();
  if (c == '\'' || c == '"') {
    copyString(c);
    return;
  }
  // A keyword, a number or an enumeration.
  isBehindWord_ = true;
  char next = c;
  do {
    output_.put(next);
    (void)cursor_.take(next);
    next = cursor_.peek();
  } while (!cursor_.isAtEnd() && std::string_view("(),#'\"").find(next) == std::string_view::npos);
}

/// Copies to the "," or ")" behind a parameter of a record.
void Filter::copyParameter() {
  levels_ = {{false, true}};
  while (!cursor_.isAtEnd() &&
         !(levels_.size() == 1 && (cursor_.peek() == ',' || cursor_.peek() == ')'))) {
    copyToken();
  }
}

void Filter::copyAsShapeRepresentation() {
  bool isComplex = cursor_.take('(');
  std::string keyword = cursor_.takeKeyword();
  while (isComplex && keyword != "REPRESENTATION" && cursor_.skipRecord()) {
    keyword = cursor_.takeKeyword();
  }
  output_.put("SHAPE_REPRESENTATION(");
  (void)cursor_.take('(');
  for (int i = 0; i < 3; ++i) {  // name, items, context_of_items
    copyParameter();
    if (i < 2 && cursor_.take(',')) {
      output_.put(',');
    }
  }
  output_.put(')');
}

}  // namespace

void copyBody(StatementReader& reader, OutputFile& output) {
  for (std::string_view text = reader.peek(); !text.empty(); text = reader.peek()) {
    output.put(text);
    reader.consume(text.size());
  }
}

void writeWithoutDropped(StatementReader& reader, const IsDropped& isDropped, OutputFile& output) {
  Filter(reader, isDropped, output).copyAll();
}

void writeRetyped(StatementReader& reader, const IsDropped& isDropped, OutputFile& output) {
  Filter(reader, isDropped, output).copyAsShapeRepresentation();
}

}  // namespace plenvorith
