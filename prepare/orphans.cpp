#include "prepare/orphans.h"

#include <algorithm>

#include "product/attributes.h"
#include "product/exact_geometry.h"
#include "product/graph.h"

namespace plenvorith {
namespace {

/// Whether a product has exact geometry: what the kernel comes to, or what a relationship of another
/// kind sets beside that, construction geometry for example, which is no shape of its own.
bool hasProductExact(const InstanceTable& table, const ProductStructure& structure) {
  Groups groups(structure.representations.size());
  for (const InstanceIndex index :
       table.instancesOf(Kind::Transformation, Kind::OtherRelationship)) {
    RepresentationIndex previous = kNoRepresentation;
    table.forEachReference(index, [&](const Reference& reference) {
      const RepresentationIndex side = structure.find(table.find(reference.number));
      if (side != kNoRepresentation && previous != kNoRepresentation) {
        groups.unite(previous, side);
      }
      previous = side != kNoRepresentation ? side : previous;
    });
  }
  std::vector<bool> isReached(structure.representations.size());
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    isReached[groups.find(i)] = isReached[groups.find(i)] || structure.representations[i].isReached;
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    if (structure.representations[i].isExact && isReached[groups.find(i)]) {
      return true;
    }
  }
  return false;
}

}  // namespace

Orphans tieOrphans(const InstanceTable& table, ProductStructure& structure) {
  Orphans orphans;
  if (hasProductExact(table, structure)) {
    return orphans;
  }
  std::vector<bool> isMapped(structure.representations.size());  // delivered by those that map them
  for (const Mapping& mapping : structure.mappings) {
    isMapped[mapping.mapped] =
        isMapped[mapping.mapped] ||
        (mapping.holder != mapping.mapped && structure.representations[mapping.holder].isExact);
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    if (structure.representations[i].isExact && !isMapped[i]) {
      orphans.representations.push_back(structure.representations[i].instance);
      structure.representations[i].isReached = true;
    }
  }
  markReachedByMapping(structure);
  if (!orphans.representations.empty() && structure.productShapes.size() == 1) {
    orphans.productShape = structure.productShapes[0];
  }
  return orphans;
}

}  // namespace plenvorith
