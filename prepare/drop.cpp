#include "prepare/drop.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <set>

namespace plenvorith {
namespace {

/// Which instances name which: for each instance the ones that name it.
class Naming {
 public:
  /// Without those that are dropped already.
  Naming(const InstanceTable& table, const std::vector<Fate>& fates) : begins_(table.size() + 1) {
    forEachNaming(table, fates, [this](InstanceIndex, InstanceIndex named) { ++begins_[named]; });
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    names_.resize(begins_.back());
    // Filled from behind, so that the ends become the beginnings.
    forEachNaming(table, fates, [this](InstanceIndex naming, InstanceIndex named) {
      names_[--begins_[named]] = naming;
    });
  }

  template <typename Visit>
  void forEachNamingOf(InstanceIndex named, Visit visit) const {
    std::for_each(names_.begin() + begins_[named], names_.begin() + begins_[named + 1], visit);
  }

 private:
  template <typename Visit>
  static void forEachNaming(const InstanceTable& table, const std::vector<Fate>& fates,
                            Visit visit) {
    for (InstanceIndex index = 0; index < table.size(); ++index) {
      if (fates[index] == Fate::Dropped) {
        continue;
      }
      table.forEachReference(index, [&](const Reference& reference) {
        const InstanceIndex named =
            reference.kind == Reference::Kind::Other ? kNoInstance : table.find(reference.number);
        if (named != kNoInstance) {
          visit(index, named);
        }
      });
    }
  }

  std::vector<std::uint32_t> begins_;
  std::vector<InstanceIndex> names_;
};

/// Looks at the references of an instance that is kept so far.
Fate fateOf(const InstanceTable& table, const std::vector<Fate>& fates, InstanceIndex index) {
  Fate fate = fates[index];
  std::uint32_t list = 0;
  bool isListDropped = false;  // all there is of it so far
  table.forEachReference(index, [&](const Reference& reference) {
    if (reference.kind == Reference::Kind::Other) {
      isListDropped = false;
      return;
    }
    const InstanceIndex named = table.find(reference.number);
    const bool isDropped = named != kNoInstance && fates[named] == Fate::Dropped;
    if (reference.kind == Reference::Kind::ListItem && reference.list != list) {
      fate = isListDropped ? Fate::Dropped : fate;
      isListDropped = true;
      list = reference.list;
    }
    if (reference.kind == Reference::Kind::ListItem) {
      isListDropped = isListDropped && isDropped;
    }
    if (isDropped && fate != Fate::Dropped) {
      fate = reference.kind == Reference::Kind::Attribute ? Fate::Dropped
             : fate == Fate::Retyped                      ? Fate::Retyped
                                                          : Fate::Changed;
    }
  });
  return isListDropped ? Fate::Dropped : fate;
}

bool isExactRepresentation(const ProductStructure& structure, InstanceIndex index) {
  const RepresentationIndex representation = structure.find(index);
  return representation != kNoRepresentation && structure.representations[representation].isExact;
}

/// Whether a representation of a tessellated type holds other items as well and is no drawing. Of a
/// type that nobody knows only exact geometry counts.
bool holdsOtherItems(const InstanceTable& table, const ProductStructure& structure,
                     InstanceIndex index) {
  if (isExactRepresentation(structure, index)) {
    return true;
  }
  bool holdsOther = false;
  if (table.has(index, kTessellatedShape) && !table.has(index, kDraughtingModel)) {
    forEachItem(table, index, [&](std::uint64_t number) {
      const InstanceIndex item = table.find(number);
      holdsOther = holdsOther || (item != kNoInstance && !table.has(item, kTessellated));
    });
  }
  return holdsOther;
}

/// What maps exact geometry: items and maps.
std::set<InstanceIndex> findExactMappings(const ProductStructure& structure) {
  std::set<InstanceIndex> found;
  for (const Mapping& mapping : structure.mappings) {
    if (structure.representations[mapping.mapped].isExact) {
      found.insert({mapping.item, mapping.map});
    }
  }
  return found;
}

}  // namespace

std::vector<Fate> decideFates(const InstanceTable& table, const ProductStructure& structure) {
  std::vector<Fate> fates(table.size(), Fate::Kept);
  std::vector<InstanceIndex> dropped;
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (table.isReplaced(index)) {
      fates[index] = Fate::Dropped;
    } else if (table.has(index, kTessellated)) {
      fates[index] = holdsOtherItems(table, structure, index) ? Fate::Retyped : Fate::Dropped;
      dropped.push_back(index);
    }
  }
  if (dropped.empty()) {
    return fates;
  }
  std::erase_if(dropped, [&fates](InstanceIndex index) { return fates[index] != Fate::Dropped; });
  const Naming naming(table, fates);
  const std::set<InstanceIndex> exactMappings = findExactMappings(structure);
  const auto isProtected = [&](InstanceIndex index) {
    return table.has(index, kAlwaysKept) || isExactRepresentation(structure, index) ||
           exactMappings.contains(index);
  };
  std::vector<InstanceIndex> affected;
  while (!dropped.empty()) {
    // All that names something dropped is looked at once, however much of it that is.
    affected.clear();
    for (const InstanceIndex named : dropped) {
      naming.forEachNamingOf(named, [&affected](InstanceIndex i) { affected.push_back(i); });
    }
    std::sort(affected.begin(), affected.end());
    affected.erase(std::unique(affected.begin(), affected.end()), affected.end());
    dropped.clear();
    for (const InstanceIndex index : affected) {
      const Fate before = fates[index];
      fates[index] = before == Fate::Dropped ? before : fateOf(table, fates, index);
      if (fates[index] == Fate::Dropped && isProtected(index)) {
        fates[index] = before == Fate::Kept ? Fate::Changed : before;
      }
      if (fates[index] != before && fates[index] == Fate::Dropped) {
        dropped.push_back(index);
      }
    }
  }
  return fates;
}

}  // namespace plenvorith
