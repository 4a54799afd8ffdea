#include "product/exact_geometry.h"

#include <algorithm>
#include <utility>

#include "product/attributes.h"
#include "product/graph.h"

namespace plenvorith {
namespace {

/// GEOMETRIC_SET(name, elements)
constexpr Attribute kElements = {"GEOMETRIC_SET", 0, 1};

/// Which GEOMETRIC_SETs hold bounded surfaces or solids, perhaps in further sets.
std::vector<bool> findSurfaceSets(const InstanceTable& table) {
  std::vector<Node> holding;
  std::vector<std::pair<Node, Node>> inside;
  for (const InstanceIndex set : table.instancesOf(Kind::SurfaceSet)) {
    table.forEachItem(set, kElements, [&](InstanceIndex element) {
      if (table.is(element, Kind::SurfaceSet)) {
        inside.emplace_back(element, set);
      } else if (table.is(element, Kind::Surface, Kind::Solid) && table.type(element).isDelivered) {
        holding.push_back(set);
      }
    });
  }
  return holding.empty() ? std::vector<bool>(table.size())
                         : reach(table.size(), holding, Edges(table.size(), inside));
}

/// Marks what can be reached from representations that have a mark.
void spread(ProductStructure& structure, bool Representation::*mark,
            const std::vector<std::pair<Node, Node>>& fromTo) {
  const std::size_t size = structure.representations.size();
  std::vector<Node> marked;
  for (RepresentationIndex i = 0; i < size; ++i) {
    if (structure.representations[i].*mark) {
      marked.push_back(i);
    }
  }
  const std::vector<bool> reached = reach(size, marked, Edges(size, fromTo));
  for (RepresentationIndex i = 0; i < size; ++i) {
    structure.representations[i].*mark = reached[i];
  }
}

}  // namespace

void markExact(const InstanceTable& table, ProductStructure& structure) {
  const std::vector<bool> surfaceSets = findSurfaceSets(table);
  for (Representation& representation : structure.representations) {
    if (table.is(representation.instance, Kind::DraughtingModel)) {
      continue;
    }
    const EntityType& holder = table.type(representation.instance);
    // A tessellated one becomes a SHAPE_REPRESENTATION of what stays.
    const bool isKnown = holder.isDelivered || holder.isTessellated;
    table.forEachItem(representation.instance, attributes::kItems, [&](InstanceIndex item) {
      const EntityType& type = table.type(item);
      const bool isExact =
          surfaceSets[item] || (type.is(Kind::Solid, Kind::Face) && type.isDelivered);
      representation.isExact = representation.isExact || (isExact && isKnown);
      representation.holdsConstruct =
          representation.holdsConstruct || isExact ||
          type.is(Kind::Construct, Kind::Solid, Kind::Shell, Kind::Face, Kind::SurfaceSet);
    });
  }
  std::vector<std::pair<Node, Node>> holders;
  for (const Mapping& mapping : structure.mappings) {
    // What is tessellated goes, and its mapping with it.
    if (!table.isTessellated(mapping.item) && !table.isTessellated(mapping.map)) {
      holders.emplace_back(mapping.mapped, mapping.holder);
    }
  }
  spread(structure, &Representation::isExact, holders);
}

void markReached(const InstanceTable& table, ProductStructure& structure) {
  std::vector<RepresentationIndex> near;
  for (const InstanceIndex index : table.instancesOf(Kind::Relationship)) {
    const EntityType& type = table.type(index);
    const RepresentationIndex rep1 = structure.find(table.attribute(index, attributes::kRep1));
    const RepresentationIndex rep2 = structure.find(table.attribute(index, attributes::kRep2));
    if (type.isComplex || type.keywords[0] != "SHAPE_REPRESENTATION_RELATIONSHIP" ||
        rep1 == kNoRepresentation || rep2 == kNoRepresentation) {
      continue;
    }
    if (structure.representations[rep1].isReached) {
      near.push_back(rep2);
    }
    if (structure.representations[rep2].isReached) {
      near.push_back(rep1);
    }
  }
  for (const RepresentationIndex index : near) {
    structure.representations[index].isReached = true;
  }
  markReachedByMapping(structure);
}

void markReachedByMapping(ProductStructure& structure) {
  std::vector<std::pair<Node, Node>> mapped;
  for (const Mapping& mapping : structure.mappings) {
    mapped.emplace_back(mapping.holder, mapping.mapped);
  }
  spread(structure, &Representation::isReached, mapped);
}

std::vector<bool> findCarried(const InstanceTable& table, const ProductStructure& structure,
                              const std::vector<RepresentationIndex>& carrying) {
  const auto canCarry = [&table](InstanceIndex index) {
    return table.is(index, Kind::Solid, Kind::Shell, Kind::Face, Kind::SurfaceSet);
  };
  std::vector<Node> items;
  for (const RepresentationIndex index : carrying) {
    table.forEachItem(structure.representations[index].instance, attributes::kItems,
                      [&](InstanceIndex item) {
                        if (canCarry(item)) {
                          items.push_back(item);
                        }
                      });
  }
  return reach(table.size(), items, [&](Node node, auto visit) {
    table.forEachReference(node, [&](const Reference& reference) {
      const InstanceIndex named = table.find(reference.number);
      if (named != kNoInstance && canCarry(named)) {
        visit(named);
      }
    });
  });
}

}  // namespace plenvorith
