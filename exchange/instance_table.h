#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "exchange/entity_types.h"
#include "exchange/references.h"
#include "exchange/statement_reader.h"

namespace plenvorith {

/// The place of an instance in the order of the file, from 0.
using InstanceIndex = std::uint32_t;
constexpr InstanceIndex kNoInstance = std::numeric_limits<InstanceIndex>::max();

/// An attribute of an entity as its schema declares it.
struct Attribute {
  std::string_view record;        ///< the keyword of the entity that declares it
  std::uint32_t place = 0;        ///< in the record of a complex instance, from 0
  std::uint32_t simplePlace = 0;  ///< in a simple instance, behind what it inherits
};

/// Whether a reference is, or is in, this attribute. What a malformed instance has behind its records
/// belongs to nothing.
[[nodiscard]] inline bool isOf(const EntityType& type, const Reference& reference,
                               const Attribute& attribute) {
  return type.isComplex
             ? reference.record < type.keywords.size() && reference.attribute == attribute.place &&
                   type.keywords[reference.record] == attribute.record
             : reference.record == 0 && reference.attribute == attribute.simplePlace;
}

/// What is kept of every instance of a file: sixteen bytes, and its references where they may say
/// something of tessellation or product structure.
class InstanceTable {
 public:
  /// Reads all instances. False on an error, which is `error`.
  [[nodiscard]] bool read(StatementReader& reader);

  [[nodiscard]] const std::string& error() const {
    return error_;
  }
  [[nodiscard]] std::size_t size() const {
    return instances_.size();
  }
  /// How many instances count.
  [[nodiscard]] std::size_t countedCount() const {
    return size() - voidCount_;
  }
  [[nodiscard]] std::uint64_t number(InstanceIndex index) const {
    return instances_[index].numberAndFlags >> 2U;
  }
  /// Where the body stands in the file.
  [[nodiscard]] std::uint64_t offset(InstanceIndex index) const {
    return instances_[index].offsetAndType >> 16U;
  }
  [[nodiscard]] const EntityType& type(InstanceIndex index) const {
    return types_[static_cast<std::uint16_t>(instances_[index].offsetAndType & 0xFFFFU)];
  }
  /// The types that there are, in the order in which they were met.
  [[nodiscard]] const EntityTypes& types() const {
    return types_;
  }
  /// Whether the instance counts and is of one of these kinds.
  template <typename... Kinds>
  [[nodiscard]] bool is(InstanceIndex index, Kinds... kinds) const {
    return !isVoid(index) && type(index).is(kinds...);
  }
  [[nodiscard]] bool isTessellated(InstanceIndex index) const {
    return !isVoid(index) && type(index).isTessellated;
  }
  /// Whether this is no instance, as it is malformed, or another one counts for its
  /// number: the first that is not tessellated, or the last if all are.
  [[nodiscard]] bool isVoid(InstanceIndex index) const {
    return (instances_[index].numberAndFlags & kVoid) != 0;
  }
  /// Whether its parentheses do not balance, or a string in it has no end.
  [[nodiscard]] bool isMalformed(InstanceIndex index) const {
    return (instances_[index].numberAndFlags & kMalformed) != 0;
  }
  [[nodiscard]] bool hasUnbalanced() const {
    return hasUnbalanced_;
  }
  [[nodiscard]] bool hasUnended() const {
    return hasUnended_;
  }
  /// The numbers that strings of the file name.
  [[nodiscard]] const NamedNumbers& namedInStrings() const {
    return namedInStrings_;
  }
  /// The instances of these kinds, which are neither `Unknown` nor such as name geometry only, in the
  /// order of their numbers.
  template <typename... Kinds>
  [[nodiscard]] std::vector<InstanceIndex> instancesOf(Kinds... kinds) const {
    std::vector<InstanceIndex> found;
    for (const InstanceIndex index : structural_) {
      if (type(index).is(kinds...)) {
        found.push_back(index);
      }
    }
    return found;
  }

  /// How many points a coordinates list holds.
  [[nodiscard]] std::uint64_t pointCount(InstanceIndex coordinates) const;

  /// The instance of this number; `kNoInstance` if there is none.
  [[nodiscard]] InstanceIndex find(std::uint64_t wanted) const;

  /// Calls `visit` with each stored reference of an instance, in the order of its text.
  template <typename Visit>
  void forEachReference(InstanceIndex index, Visit visit) const {
    const std::size_t place = referencesOf(index);
    if (place == kNone) {
      return;
    }
    ReferenceWalker walker(store_.begin() + static_cast<std::ptrdiff_t>(place));
    Reference reference;
    while (walker.next(reference)) {
      visit(reference);
    }
  }

  /// The instance that an attribute names; `kNoInstance` if it is no reference, or names none.
  [[nodiscard]] InstanceIndex attribute(InstanceIndex index, const Attribute& attribute) const;

  /// Calls `visit` with the instance of each item of a list that is an attribute.
  template <typename Visit>
  void forEachItem(InstanceIndex index, const Attribute& attribute, Visit visit) const {
    const EntityType& type = this->type(index);
    forEachReference(index, [&](const Reference& reference) {
      const InstanceIndex item =
          reference.kind == Reference::Kind::ListItem && isOf(type, reference, attribute)
              ? find(reference.number)
              : kNoInstance;
      if (item != kNoInstance) {
        visit(item);
      }
    });
  }

 private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  static constexpr std::uint64_t kVoid = 1;
  static constexpr std::uint64_t kMalformed = 2;
  struct Instance {
    std::uint64_t numberAndFlags = 0;  // four times the number, plus the flags
    std::uint64_t offsetAndType = 0;   // the offset in the upper 48 bits
  };

  struct Stored {
    InstanceIndex instance;
    std::uint32_t placeLow, placeHigh;  // in the store
  };

  bool add(StatementReader& reader, ReferenceScanner& scanner);
  bool readBody(InstanceIndex index, StatementReader& reader, ReferenceScanner& scanner,
                std::uint16_t& type);
  bool store(InstanceIndex index, StatementReader& reader, ReferenceScanner& scanner);
  void sortNumbers();
  void gatherStructure();
  std::size_t referencesOf(InstanceIndex index) const;

  EntityTypes types_;
  std::deque<Instance> instances_;
  std::deque<Stored> stored_;  // those with references, in the order of the file
  ReferenceStore store_;
  std::deque<std::pair<InstanceIndex, std::uint64_t>> pointCounts_;  // in the order of the file
  std::vector<InstanceIndex> byNumber_;    // empty if the numbers ascend in the file
  std::vector<InstanceIndex> structural_;  // in the order of their numbers
  std::size_t voidCount_ = 0;
  bool hasUnbalanced_ = false;
  bool hasUnended_ = false;
  NamedNumbers namedInStrings_;
  std::string error_;
};

}  // namespace plenvorith
