#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

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

/// Takes the references out of the body of one instance, which is given in pieces, without blanks,
/// cut in no string.
///
/// A list is what stands in parentheses without a keyword before them; the parameters of a keyword
/// are none. Of equal references that follow one another in a list only the first is stored.
class ReferenceScanner {
 public:
  /// Begins an instance; its references are added behind those in `store`.
  void start(ReferenceStore& store);
  void scan(std::string_view piece);
  void finish();

  /// The keywords of the records, joined by "(": "A" or, of a complex instance, "A(B(C".
  [[nodiscard]] const std::string& keywords() const {
    return keywords_;
  }
  [[nodiscard]] bool isComplex() const {
    return isComplex_;
  }
  /// The largest number that any instance so far names, of those that an instance may have.
  [[nodiscard]] std::uint64_t largestNumber() const {
    return largestNumber_;
  }

 private:
  enum class Group : std::uint8_t { Complex, Record, Parameters, List };
  enum class Token : std::uint8_t { None, Reference, Word, String, Binary };
  struct Level {
    Group group = Group::List;
    bool isStored = false;  // a reference of the list is stored, and nothing of another one behind
    bool holdsMore = false;
  };

  const char* scanToken(const char* p, const char* end);
  void open();
  void noteOther();
  void storeReference();
  void put(std::uint64_t value);

  ReferenceStore* store_ = nullptr;
  std::string keywords_;
  bool isComplex_ = false;
  std::vector<Level> levels_;
  Token token_ = Token::None;
  bool isBehindWord_ = false;
  std::uint64_t number_ = 0;  // of the reference that is being read
  std::uint64_t largestNumber_ = 0;
  std::uint64_t previous_ = 0;  // of the reference before
  std::uint64_t attribute_ = 0;
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
