#include "prepare/orphans.h"

#include <algorithm>
#include <map>
#include <set>

namespace plenvorith {
namespace {

/// Whether a product has exact geometry, over whatever relationship of representations.
bool hasProductExact(const InstanceTable& table, const ProductStructure& structure) {
  std::multimap<RepresentationIndex, RepresentationIndex> near;
  const auto tie = [&near](RepresentationIndex a, RepresentationIndex b) {
    near.emplace(a, b);
    near.emplace(b, a);
  };
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (!table.has(index, kRelationship | kTransformation | kAnyRelationship)) {
      continue;
    }
    RepresentationIndex previous = kNoRepresentation;
    for (const InstanceIndex named : attributesOf(table, index)) {
      const RepresentationIndex side = structure.find(named);
      if (side != kNoRepresentation && previous != kNoRepresentation) {
        tie(previous, side);
      }
      previous = side != kNoRepresentation ? side : previous;
    }
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    tie(i, structure.representations[i].group);
  }
  std::set<RepresentationIndex> reached;
  std::vector<RepresentationIndex> open;
  for (const auto& [group, products] : structure.productsOfGroup) {
    reached.insert(group);
    open.push_back(group);
  }
  while (!open.empty()) {
    const RepresentationIndex index = open.back();
    open.pop_back();
    if (structure.representations[index].isExact) {
      return true;
    }
    const auto [begin, end] = near.equal_range(index);
    for (auto entry = begin; entry != end; ++entry) {
      if (reached.insert(entry->second).second) {
        open.push_back(entry->second);
      }
    }
  }
  return false;
}

}  // namespace

Orphans findOrphans(const InstanceTable& table, const ProductStructure& structure) {
  Orphans orphans;
  const auto isExact = [](const Representation& representation) { return representation.isExact; };
  if (std::none_of(structure.representations.begin(), structure.representations.end(), isExact) ||
      hasProductExact(table, structure)) {
    return orphans;
  }
  std::set<RepresentationIndex> mapped;  // delivered by those that map them
  for (const Mapping& mapping : structure.mappings) {
    if (mapping.holder != mapping.mapped && structure.representations[mapping.holder].isExact) {
      mapped.insert(mapping.mapped);
    }
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    if (structure.representations[i].isExact && !mapped.contains(i)) {
      orphans.representations.push_back(structure.representations[i].instance);
    }
  }
  if (structure.productShapes.size() == 1) {
    orphans.productShape = structure.productShapes[0];
  }
  return orphans;
}

}  // namespace plenvorith
