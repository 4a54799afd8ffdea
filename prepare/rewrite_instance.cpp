#include "prepare/rewrite_instance.h"

#include <string>
#include <string_view>
#include <vector>

#include "exchange/token_reader.h"

namespace plenvorith {
namespace {

using IsDropped = std::function<bool(std::uint64_t)>;

/// Copies a body token by token, and leaves references out of lists; an attribute without its
/// reference is "$".
class Filter {
 public:
  Filter(TokenReader& tokens, const IsDropped& isDropped, OutputFile& output)
      : tokens_(tokens), isDropped_(isDropped), output_(output) {}

  void copyAll() {
    while (!tokens_.isAtEnd()) {
      copy(tokens_.next());
    }
  }

  /// Copies to the "," or ")" behind a parameter of a record.
  void copyParameter() {
    levels_ = {{false, true}};
    for (char c = tokens_.peek(); !tokens_.isAtEnd(); c = tokens_.peek()) {
      if (levels_.size() == 1 && (c == ',' || c == ')')) {
        break;
      }
      copy(tokens_.next());
    }
  }

 private:
  /// An open parenthesis. In a list the commas are written only between what is kept.
  struct Level {
    bool isList = false;
    bool isFirst = true;
  };

  [[nodiscard]] bool isInList() const {
    return !levels_.empty() && levels_.back().isList;
  }

  void copy(const Token& token) {
    const bool isBehindWord = isBehindWord_;
    isBehindWord_ = token.kind == Token::Kind::Keyword || token.kind == Token::Kind::Other;
    switch (token.kind) {
      case Token::Kind::Open:
        // The outermost parenthesis of a complex instance holds records, any other one without a
        // keyword before it is a list.
        if (!isBehindWord) {
          startItem();
        }
        levels_.push_back({!isBehindWord && !levels_.empty(), true});
        break;
      case Token::Kind::Close:
        if (!levels_.empty()) {
          levels_.pop_back();
        }
        break;
      case Token::Kind::Comma:
        if (isInList()) {
          return;
        }
        break;
      case Token::Kind::Reference:
        if (isDropped_(token.number)) {
          if (!isInList()) {
            output_.put('$');
          }
          return;
        }
        startItem();
        break;
      default:
        if (!token.isRest) {
          startItem();
        }
    }
    output_.put(token.text);
  }

  /// Writes the comma in front of an item of a list, unless it is the first that is kept.
  void startItem() {
    if (isInList()) {
      if (!levels_.back().isFirst) {
        output_.put(',');
      }
      levels_.back().isFirst = false;
    }
  }

  TokenReader& tokens_;
  const IsDropped& isDropped_;
  OutputFile& output_;
  std::vector<Level> levels_;
  bool isBehindWord_ = false;
};

}  // namespace

void copyBody(StatementReader& reader, OutputFile& output) {
  for (std::string_view text = reader.peek(); !text.empty(); text = reader.peek()) {
    output.put(text);
    reader.consume(text.size());
  }
}

void writeWithoutDropped(StatementReader& reader, const IsDropped& isDropped, OutputFile& output) {
  TokenReader tokens(reader);
  Filter(tokens, isDropped, output).copyAll();
}

void writeRetyped(StatementReader& reader, const EntityType& type, const IsDropped& isDropped,
                  OutputFile& output) {
  TokenReader tokens(reader);
  const std::string_view record =
      type.isComplex ? std::string_view("REPRESENTATION") : std::string_view(type.keywords[0]);
  (void)tokens.enterRecord(record, type.isComplex);
  Filter filter(tokens, isDropped, output);
  output.put("SHAPE_REPRESENTATION(");
  for (int i = 0; i < 3; ++i) {  // name, items, context_of_items
    filter.copyParameter();
    if (i < 2 && tokens.take(',')) {
      output.put(',');
    }
  }
  output.put(')');
}

}  // namespace plenvorith
