#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "exchange/entity_types.h"
#include "exchange/references.h"
#include "exchange/statement_reader.h"

namespace plenvorith {

/// The place of an instance in the order of the file, from 0.
using InstanceIndex = std::uint32_t;
constexpr InstanceIndex kNoInstance = std::numeric_limits<InstanceIndex>::max();

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
  /// How many different numbers there are.
  [[nodiscard]] std::size_t distinctCount() const {
    return size() - replacedCount_;
  }
  [[nodiscard]] std::uint64_t number(InstanceIndex index) const {
    return instances_[index].numberAndFlag >> 1U;
  }
  /// Where the body stands in the file.
  [[nodiscard]] std::uint64_t offset(InstanceIndex index) const {
    return instances_[index].offsetAndType >> 16U;
  }
  [[nodiscard]] const EntityType& type(InstanceIndex index) const {
    return types_[static_cast<std::uint16_t>(instances_[index].offsetAndType & 0xFFFFU)];
  }
  [[nodiscard]] bool has(InstanceIndex index, std::uint32_t anyOf) const {
    return !isReplaced(index) && type(index).has(anyOf);
  }
  /// Whether a later instance has the same number, so that this one is none.
  [[nodiscard]] bool isReplaced(InstanceIndex index) const {
    return (instances_[index].numberAndFlag & 1U) != 0;
  }
  /// Of an instance, or in a reference, which may name none: a new instance must not become it.
  [[nodiscard]] std::uint64_t largestNumber() const {
    return largestNumber_;
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

  /// The instance that the n-th attribute names that is a reference itself, from 0; `kNoInstance`
  /// if there is none or it names none.
  [[nodiscard]] InstanceIndex attribute(InstanceIndex index, std::size_t n) const;

 private:
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  struct Instance {
    std::uint64_t numberAndFlag = 0;  // twice the number, plus 1 if it is replaced
    std::uint64_t offsetAndType = 0;  // the offset in the upper 48 bits
  };

  struct Stored {
    InstanceIndex instance;
    std::uint32_t placeLow, placeHigh;  // in the store
  };

  bool add(StatementReader& reader, ReferenceScanner& scanner);
  void store(InstanceIndex index, StatementReader& reader, ReferenceScanner& scanner, bool isFace);
  void sortNumbers();
  std::size_t referencesOf(InstanceIndex index) const;

  EntityTypes types_;
  std::deque<Instance> instances_;
  std::deque<Stored> stored_;  // those with references, in the order of the file
  ReferenceStore store_;
  std::deque<std::pair<InstanceIndex, std::uint64_t>> pointCounts_;  // in the order of the file
  std::vector<InstanceIndex> byNumber_;  // empty if the numbers ascend in the file
  std::size_t replacedCount_ = 0;
  std::uint64_t largestNumber_ = 0;
  std::string error_;
};

}  // namespace plenvorith
