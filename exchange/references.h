#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "exchange/token_reader.h"

namespace plenvorith {

/// One reference in the body of an instance, or what stands between references.
struct Reference {
  enum class Kind {
    Attribute,  ///< the reference is an attribute itself
    ListItem,   ///< it is in a list
    Other,      ///< no reference: the list of the reference before holds other things as well
  };
  Kind kind = Kind::Attribute;
  std::uint64_t number = 0;     ///< of the instance that is named
  std::uint32_t record = 0;     ///< of a complex instance, counted from 0; 0 in a simple one
  std::uint32_t attribute = 0;  ///< of the record, counted from 0
  std::uint32_t list = 0;       ///< the innermost list, counted from 1
};

/// The stored references of many instances, a few bytes each.
using ReferenceStore = std::deque<std::uint8_t>;

/// Takes the references out of the bodies of instances.
///
/// A list is what stands in parentheses without a keyword before them; the parameters of a keyword
/// are none. Of equal references that follow one another in a list only the first is stored, and none
/// that no instance can have. The lists of a triangulated face, which are most of a file, hold none.
class ReferenceScanner {
 public:
  /// Adds the references of the body at the reader's place behind those in `store`.
  ///
  /// Gives  false if its parentheses do not balance.
  [[nodiscard]] bool scan(StatementReader& reader, ReferenceStore& store);

  /// The keywords of the records, joined by "(": "A" or, of a complex instance, "A(B(C".
  [[nodiscard]] const std::string& keywords() const {
    return keywords_;
  }
  [[nodiscard]] bool isComplex() const {
    return isComplex_;
  }

 private:
  enum class Group : std::uint8_t { Complex, Record, Parameters, List };
  struct Level {
    Group group = Group::List;
    bool holdsMore = false;
    /// A reference of the list is stored, and nothing of another one behind it, while this is
    /// `epoch_`.
    std::uint64_t storedIn = 0;
  };

  void scanToken(const Token& token, TokenReader& tokens);
  void open(TokenReader& tokens);
  void startWord(const Token& token);
  void noteOther();
  void storeReference(std::uint64_t number);
  void put(std::uint64_t value);
  [[nodiscard]] bool isInRecords() const {
    return levels_.empty() || levels_.back().group == Group::Complex;
  }

  ReferenceStore* store_ = nullptr;
  std::string keywords_;
  std::string keyword_;  // of the record
  bool isFace_ = false;  // it is of a triangulated face
  bool isComplex_ = false;
  bool isBalanced_ = true;
  std::vector<Level> levels_;
  bool isBehindWord_ = false;
  std::uint64_t epoch_ = 0;
  std::uint64_t previous_ = 0;  // of the reference before
  std::uint64_t attribute_ = 0;
  std::uint64_t lastAttribute_ = 0;  // that may hold references
  std::uint64_t records_ = 0;
};

/// Walks the stored references of one instance.
class ReferenceWalker {
 public:
  explicit ReferenceWalker(const ReferenceStore::const_iterator& begin) : place_(begin) {}

  /// Sets `reference` to the next one; false behind the last one.
  [[nodiscard]] bool next(Reference& reference);

 private:
  std::uint64_t take();

  ReferenceStore::const_iterator place_;
  Reference current_;
};

}  // namespace plenvorith
