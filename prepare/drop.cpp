#include "prepare/drop.h"

#include <cstddef>
#include <numeric>
#include <string>
#include <utility>

#include "product/attributes.h"

namespace plenvorith {
namespace {

/// What an instance names by one attribute, or in one part of a list.
struct Slot {
  static constexpr std::uint32_t kNeverEmpty = 0xFFFFFFFF;

  InstanceIndex owner = kNoInstance;
  std::uint32_t left = 0;  ///< how many of what it names stay
};

/// All that instances name, and for each instance the slots that name it. What lists hold besides
/// references never goes, nor does what names nothing.
class Slots {
 public:
  Slots(const InstanceTable& table, const std::vector<Fate>& fates)
      : table_(table), fates_(fates), begins_(table.size() + 1) {
    forEachNaming([this](InstanceIndex named, std::uint32_t) { ++begins_[named]; });
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    places_.resize(begins_.back());
    slots.clear();
    // Filled from behind, so that the ends become the beginnings.
    forEachNaming(
        [this](InstanceIndex named, std::uint32_t slot) { places_[--begins_[named]] = slot; });
  }

  template <typename Visit>
  void forEachOf(InstanceIndex named, Visit visit) {
    for (std::size_t i = begins_[named]; i < begins_[named + 1]; ++i) {
      visit(slots[places_[i]]);
    }
  }

  std::vector<Slot> slots;

 private:
  template <typename Visit>
  void forEachNaming(Visit visit) {
    for (InstanceIndex owner = 0; owner < table_.size(); ++owner) {
      std::uint32_t list = 0;
      if (fates_[owner] == Fate::Dropped) {
        continue;
      }
      table_.forEachReference(owner, [&](const Reference& reference) {
        if (reference.kind == Reference::Kind::Other) {
          slots.back().left = Slot::kNeverEmpty;
          return;
        }
        if (reference.kind == Reference::Kind::Attribute || reference.list != list) {
          slots.push_back({owner, 0});
        }
        list = reference.list;
        Slot& slot = slots.back();
        slot.left += slot.left == Slot::kNeverEmpty ? 0 : 1;
        const InstanceIndex named = table_.find(reference.number);
        if (named != kNoInstance) {
          visit(named, static_cast<std::uint32_t>(slots.size() - 1));
        }
      });
    }
  }

  const InstanceTable& table_;
  const std::vector<Fate>& fates_;
  std::vector<std::size_t> begins_;
  std::vector<std::uint32_t> places_;
};

class Dropper {
 public:
  Dropper(const InstanceTable& table, const ProductStructure& structure)
      : table_(table), structure_(structure), isExactMapping_(table.size()) {
    for (const Mapping& mapping : structure.mappings) {
      if (structure.representations[mapping.mapped].isExact) {
        isExactMapping_[mapping.item] = true;
        isExactMapping_[mapping.map] = true;
      }
    }
  }

  std::vector<Fate> decide() {
    bool isAnyTessellated = false;
    for (InstanceIndex index = 0; index < table_.size(); ++index) {
      fates_[index] = fateAlone(index);
      isAnyTessellated = isAnyTessellated || table_.isTessellated(index);
    }
    if (isAnyTessellated) {
      dropWhatNames();
      dropOwnContexts();
    }
    return std::move(fates_);
  }

 private:
  [[nodiscard]] const Representation* representationAt(InstanceIndex index) const {
    const RepresentationIndex found = structure_.find(index);
    return found == kNoRepresentation ? nullptr : &structure_.representations[found];
  }

  /// Whether a representation stays, whatever becomes of its items: an exact one, and what product
  /// structure rests on.
  [[nodiscard]] bool isKeptRepresentation(InstanceIndex index) const {
    const Representation* const representation = representationAt(index);
    return representation != nullptr &&
           (representation->isExact || representation->isNamedByProduct);
  }

  /// Whether a representation of a tessellated type holds other items as well and is no drawing.
  [[nodiscard]] bool holdsOtherItems(InstanceIndex index) const {
    bool holdsOther = false;
    if (table_.is(index, Kind::TessellatedShape) && !table_.is(index, Kind::DraughtingModel)) {
      table_.forEachItem(index, attributes::kItems, [&](InstanceIndex item) {
        holdsOther = holdsOther || !table_.isTessellated(item);
      });
    }
    return holdsOther;
  }

  [[nodiscard]] Fate fateAlone(InstanceIndex index) const {
    if (table_.isVoid(index)) {
      // Of several with one number the kernel takes one or another by where it is named.
      return table_.isMalformed(index) || table_.type(index).isTessellated ? Fate::Dropped
                                                                           : Fate::Kept;
    }
    if (!table_.isTessellated(index)) {
      return Fate::Kept;
    }
    return isKeptRepresentation(index) || holdsOtherItems(index) ? Fate::Retyped : Fate::Dropped;
  }

  void dropWhatNames() {
    Slots slots(table_, fates_);
    std::vector<InstanceIndex> dropped;
    for (InstanceIndex index = 0; index < table_.size(); ++index) {
      if (fates_[index] == Fate::Dropped && !table_.isVoid(index)) {
        dropped.push_back(index);
      }
    }
    while (!dropped.empty()) {
      const InstanceIndex named = dropped.back();
      dropped.pop_back();
      slots.forEachOf(named, [&](Slot& slot) {
        slot.left -= slot.left == Slot::kNeverEmpty ? 0 : 1;
        if (takeOut(slot.owner, slot.left == 0)) {
          dropped.push_back(slot.owner);
        }
      });
    }
  }

  /// The unit and the context that a prepared file has in front of its one tessellated representation
  /// go with that, or each preparing would add two more.
  void dropOwnContexts() {
    static const std::vector<std::string> kUnit = {"LENGTH_UNIT", "NAMED_UNIT", "SI_UNIT"};
    static const std::vector<std::string> kContext = {"GEOMETRIC_REPRESENTATION_CONTEXT",
                                                      "GLOBAL_UNIT_ASSIGNED_CONTEXT",
                                                      "REPRESENTATION_CONTEXT"};
    std::vector<std::pair<InstanceIndex, InstanceIndex>> own;  // context, unit
    std::vector<bool> isOwn(table_.size());
    for (InstanceIndex index = 2; index < table_.size(); ++index) {
      const InstanceIndex context = index - 1;
      const InstanceIndex unit = index - 2;
      if (fates_[index] == Fate::Dropped && table_.is(index, Kind::TessellatedShape) &&
          table_.attribute(index, attributes::kContextOfItems) == context &&
          table_.type(context).keywords == kContext && table_.type(unit).keywords == kUnit) {
        own.emplace_back(context, unit);
        isOwn[context] = true;
        isOwn[unit] = true;
      }
    }
    std::vector<bool> isNamed(own.empty() ? 0 : table_.size());
    for (InstanceIndex index = 0; index < isNamed.size(); ++index) {
      if (fates_[index] != Fate::Dropped && !isOwn[index]) {
        table_.forEachReference(index, [&](const Reference& reference) {
          const InstanceIndex named = table_.find(reference.number);
          if (named != kNoInstance) {
            isNamed[named] = true;
          }
        });
      }
    }
    for (const auto& [context, unit] : own) {
      if (!isNamed[context]) {
        fates_[context] = Fate::Dropped;
        fates_[unit] = isNamed[unit] ? fates_[unit] : Fate::Dropped;
      }
    }
  }

  /// Takes something out of an instance, all of an attribute or a list perhaps. Whether that drops it.
  bool takeOut(InstanceIndex owner, bool isAll) {
    Fate& fate = fates_[owner];
    if (fate == Fate::Dropped) {
      return false;
    }
    const bool isRepresentation = isKeptRepresentation(owner);
    if (isAll && !table_.type(owner).isKept && !isRepresentation && !isExactMapping_[owner]) {
      fate = Fate::Dropped;
      return true;
    }
    const bool isEmptied = isAll && isRepresentation && !representationAt(owner)->isExact;
    fate = isEmptied || fate == Fate::Retyped ? Fate::Retyped : Fate::Changed;
    return false;
  }

  const InstanceTable& table_;
  const ProductStructure& structure_;
  std::vector<bool> isExactMapping_;
  std::vector<Fate> fates_ = std::vector<Fate>(table_.size(), Fate::Kept);
};

}  // namespace

std::vector<Fate> decideFates(const InstanceTable& table, const ProductStructure& structure) {
  return Dropper(table, structure).decide();
}

}  // namespace plenvorith
