#include "product/product_structure.h"

#include <algorithm>
#include <set>
#include <utility>

namespace plenvorith {
namespace {

/// The instances with a role, in the order of their numbers.
std::vector<InstanceIndex> instancesWith(const InstanceTable& table, std::uint32_t roles) {
  std::vector<InstanceIndex> found;
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (table.has(index, roles)) {
      found.push_back(index);
    }
  }
  std::sort(found.begin(), found.end(), [&table](InstanceIndex a, InstanceIndex b) {
    return table.number(a) < table.number(b);
  });
  return found;
}

void readRepresentations(const InstanceTable& table, ProductStructure& structure) {
  for (const InstanceIndex index : instancesWith(table, kRepresentation)) {
    const auto place = static_cast<RepresentationIndex>(structure.representations.size());
    Representation representation;
    representation.instance = index;
    representation.group = place;
    const EntityType& type = table.type(index);
    table.forEachReference(index, [&](const Reference& reference) {
      if (reference.kind == Reference::Kind::Attribute && reference.attribute == 2 &&
          isInRecord(type, reference, "REPRESENTATION")) {
        representation.context = table.find(reference.number);
      }
    });
    structure.byInstance.emplace(index, place);
    structure.representations.push_back(representation);
  }
}

RepresentationIndex groupOf(const ProductStructure& structure, RepresentationIndex index) {
  while (structure.representations[index].group != index) {
    index = structure.representations[index].group;
  }
  return index;
}

void unite(ProductStructure& structure, RepresentationIndex a, RepresentationIndex b) {
  const RepresentationIndex first = groupOf(structure, a);
  const RepresentationIndex second = groupOf(structure, b);
  structure.representations[std::max(first, second)].group = std::min(first, second);
}

/// The two sides of a relationship; `kNoRepresentation` for what is none.
std::pair<RepresentationIndex, RepresentationIndex> sidesOf(const InstanceTable& table,
                                                            const ProductStructure& structure,
                                                            InstanceIndex relationship) {
  const std::vector<InstanceIndex> sides =
      attributesOf(table, relationship, "REPRESENTATION_RELATIONSHIP");
  if (sides.size() < 2) {
    return {kNoRepresentation, kNoRepresentation};
  }
  return {structure.find(sides[0]), structure.find(sides[1])};
}

/// Puts together what relationships without a transformation make equal in place.
void readGroups(const InstanceTable& table, ProductStructure& structure) {
  for (const InstanceIndex index : instancesWith(table, kRelationship)) {
    if (table.has(index, kTransformation)) {
      continue;
    }
    const auto [first, second] = sidesOf(table, structure, index);
    if (first != kNoRepresentation && second != kNoRepresentation) {
      unite(structure, first, second);
    }
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    structure.representations[i].group = groupOf(structure, i);
  }
}

/// The products by their definitions, and which usage or product each PRODUCT_DEFINITION_SHAPE is
/// of.
struct Definitions {
  std::map<InstanceIndex, ProductIndex> products;
  std::map<InstanceIndex, InstanceIndex> shapes;  // of products: the definition
  std::map<InstanceIndex, InstanceIndex> usages;  // shapes of usages: the usage
};

ProductIndex addProduct(ProductStructure& structure, Definitions& definitions,
                        InstanceIndex definition) {
  const auto next = static_cast<ProductIndex>(structure.products.size());
  const auto [entry, isNew] = definitions.products.emplace(definition, next);
  if (isNew) {
    structure.products.push_back(definition);
  }
  return entry->second;
}

Definitions readDefinitions(const InstanceTable& table, ProductStructure& structure) {
  Definitions definitions;
  for (const InstanceIndex shape : instancesWith(table, kProductShape)) {
    const std::vector<InstanceIndex> attributes = attributesOf(table, shape);
    if (attributes.empty() || attributes[0] == kNoInstance) {
      continue;
    }
    if (table.has(attributes[0], kUsage)) {
      definitions.usages.emplace(shape, attributes[0]);
    } else {
      definitions.shapes.emplace(shape, attributes[0]);
      addProduct(structure, definitions, attributes[0]);
      structure.productShapes.push_back(shape);
    }
  }
  return definitions;
}

/// Ties representations to the products, features and properties that they show.
void readShapes(const InstanceTable& table, ProductStructure& structure,
                const Definitions& definitions) {
  std::map<RepresentationIndex, std::set<ProductIndex>> products;
  for (const InstanceIndex index : instancesWith(table, kDefinition)) {
    const std::vector<InstanceIndex> attributes = attributesOf(table, index);
    if (attributes.size() < 2) {
      continue;
    }
    const RepresentationIndex used = structure.find(attributes[1]);
    if (used == kNoRepresentation) {
      continue;
    }
    const auto shape = definitions.shapes.find(attributes[0]);
    if (shape != definitions.shapes.end()) {
      products[structure.representations[used].group].insert(
          definitions.products.at(shape->second));
    } else {
      structure.representations[used].isOfProperty = true;
    }
  }
  for (const auto& [group, found] : products) {
    structure.productsOfGroup[group].assign(found.begin(), found.end());
  }
}

bool holdsProduct(const ProductStructure& structure, RepresentationIndex index,
                  ProductIndex product) {
  const std::vector<ProductIndex>& products = structure.productsOf(index);
  return index != kNoRepresentation &&
         std::binary_search(products.begin(), products.end(), product);
}

/// Whether the second side of a relationship is the part: told by the products of the sides.
bool isPartSecond(const ProductStructure& structure, const Usage& usage, RepresentationIndex first,
                  RepresentationIndex second) {
  const bool isFirstPart = holdsProduct(structure, first, usage.part);
  const bool isSecondPart = holdsProduct(structure, second, usage.part);
  if (isFirstPart != isSecondPart) {
    return isSecondPart;
  }
  return holdsProduct(structure, first, usage.whole) &&
         !holdsProduct(structure, second, usage.whole);
}

/// Reads usages, with the relationship that places each. Gives the relationships that do.
std::set<InstanceIndex> readUsages(const InstanceTable& table, ProductStructure& structure,
                                   Definitions& definitions) {
  std::set<InstanceIndex> placing;
  std::map<InstanceIndex, InstanceIndex> relationshipOf;  // by usage
  for (const InstanceIndex index : instancesWith(table, kContextDependent)) {
    const std::vector<InstanceIndex> attributes = attributesOf(table, index);
    if (attributes.size() < 2 || attributes[0] == kNoInstance) {
      continue;
    }
    placing.insert(attributes[0]);
    const auto usage = definitions.usages.find(attributes[1]);
    if (usage != definitions.usages.end()) {
      relationshipOf.emplace(usage->second, attributes[0]);
    }
  }
  for (const InstanceIndex index : instancesWith(table, kUsage)) {
    const std::vector<InstanceIndex> sides =
        attributesOf(table, index, "PRODUCT_DEFINITION_RELATIONSHIP");
    if (sides.size() < 2 || sides[0] == kNoInstance || sides[1] == kNoInstance) {
      continue;
    }
    Usage usage;
    usage.whole = addProduct(structure, definitions, sides[0]);
    usage.part = addProduct(structure, definitions, sides[1]);
    const auto relationship = relationshipOf.find(index);
    if (relationship != relationshipOf.end() && table.has(relationship->second, kTransformation)) {
      usage.relationship = relationship->second;
      const auto [first, second] = sidesOf(table, structure, usage.relationship);
      usage.isPartSecond = isPartSecond(structure, usage, first, second);
    }
    structure.usages.push_back(usage);
  }
  return placing;
}

void readTransformations(const InstanceTable& table, ProductStructure& structure,
                         const std::set<InstanceIndex>& ofUsages) {
  for (const InstanceIndex index : instancesWith(table, kTransformation)) {
    const auto [first, second] = sidesOf(table, structure, index);
    if (ofUsages.contains(index) || first == kNoRepresentation || second == kNoRepresentation) {
      continue;
    }
    // A side that is no product's stands in the one that is.
    const bool isSecond =
        !structure.productsOf(first).empty() && structure.productsOf(second).empty();
    structure.transformations.push_back(
        {index, isSecond ? second : first, isSecond ? first : second, isSecond});
  }
}

void readMappings(const InstanceTable& table, ProductStructure& structure) {
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    const InstanceIndex holder = structure.representations[i].instance;
    if (table.has(holder, kDraughtingModel)) {
      continue;  // shows the part once more
    }
    forEachItem(table, holder, [&](std::uint64_t number) {
      const InstanceIndex item = table.find(number);
      if (item == kNoInstance || !table.has(item, kMappedItem)) {
        return;
      }
      const InstanceIndex map = table.attribute(item, 0);
      const RepresentationIndex mapped =
          map == kNoInstance ? kNoRepresentation : structure.find(table.attribute(map, 1));
      if (mapped != kNoRepresentation) {
        structure.mappings.push_back({item, map, mapped, i});
      }
    });
  }
}

/// Marks what holds exact geometry itself, and from there whatever maps it.
void markExact(const InstanceTable& table, ProductStructure& structure) {
  for (Representation& representation : structure.representations) {
    if (table.has(representation.instance, kDraughtingModel)) {
      continue;
    }
    forEachItem(table, representation.instance, [&](std::uint64_t number) {
      const InstanceIndex item = table.find(number);
      representation.isExact =
          representation.isExact ||
          (item != kNoInstance && table.has(item, kSolid | kShell | kExactFace));
    });
  }
  std::multimap<RepresentationIndex, RepresentationIndex> holders;
  std::vector<RepresentationIndex> found;
  for (const Mapping& mapping : structure.mappings) {
    // What is tessellated goes, and its mapping with it.
    if (!table.has(mapping.item, kTessellated) && !table.has(mapping.map, kTessellated)) {
      holders.emplace(mapping.mapped, mapping.holder);
    }
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    if (structure.representations[i].isExact) {
      found.push_back(i);
    }
  }
  while (!found.empty()) {
    const auto [begin, end] = holders.equal_range(found.back());
    found.pop_back();
    for (auto entry = begin; entry != end; ++entry) {
      Representation& holder = structure.representations[entry->second];
      if (!holder.isExact) {
        holder.isExact = true;
        found.push_back(entry->second);
      }
    }
  }
}

/// Marks the shapes of products and, from there, what they map.
void markOfProduct(ProductStructure& structure) {
  std::multimap<RepresentationIndex, RepresentationIndex> mappedIn;  // by the holder's group
  for (const Mapping& mapping : structure.mappings) {
    mappedIn.emplace(structure.representations[mapping.holder].group,
                     structure.representations[mapping.mapped].group);
  }
  std::set<RepresentationIndex> groups;
  std::vector<RepresentationIndex> found;
  for (const auto& [group, products] : structure.productsOfGroup) {
    groups.insert(group);
    found.push_back(group);
  }
  while (!found.empty()) {
    const auto [begin, end] = mappedIn.equal_range(found.back());
    found.pop_back();
    for (auto entry = begin; entry != end; ++entry) {
      if (groups.insert(entry->second).second) {
        found.push_back(entry->second);
      }
    }
  }
  for (Representation& representation : structure.representations) {
    representation.isOfProduct = groups.contains(representation.group);
  }
}

}  // namespace

const std::vector<ProductIndex>& ProductStructure::productsOf(RepresentationIndex index) const {
  static const std::vector<ProductIndex> none;
  if (index == kNoRepresentation) {
    return none;
  }
  const auto found = productsOfGroup.find(representations[index].group);
  return found == productsOfGroup.end() ? none : found->second;
}

RepresentationIndex ProductStructure::find(InstanceIndex instance) const {
  const auto found = byInstance.find(instance);
  return found == byInstance.end() ? kNoRepresentation : found->second;
}

std::vector<InstanceIndex> attributesOf(const InstanceTable& table, InstanceIndex index,
                                        std::string_view record) {
  std::vector<InstanceIndex> attributes;
  const EntityType& type = table.type(index);
  table.forEachReference(index, [&](const Reference& reference) {
    if (reference.kind == Reference::Kind::Attribute &&
        (record.empty() || isInRecord(type, reference, record))) {
      attributes.push_back(table.find(reference.number));
    }
  });
  return attributes;
}

ProductStructure readProductStructure(const InstanceTable& table) {
  ProductStructure structure;
  readRepresentations(table, structure);
  readGroups(table, structure);
  Definitions definitions = readDefinitions(table, structure);
  readShapes(table, structure, definitions);
  const std::set<InstanceIndex> ofUsages = readUsages(table, structure, definitions);
  readTransformations(table, structure, ofUsages);
  readMappings(table, structure);
  markExact(table, structure);
  markOfProduct(structure);
  return structure;
}

std::vector<bool> findCarried(const InstanceTable& table, const ProductStructure& structure) {
  std::vector<bool> carried(table.size());
  std::vector<InstanceIndex> found;
  const auto add = [&](std::uint64_t number) {
    const InstanceIndex index = table.find(number);
    if (index != kNoInstance && table.has(index, kSolid | kShell | kExactFace) && !carried[index]) {
      carried[index] = true;
      found.push_back(index);
    }
  };
  for (const Representation& representation : structure.representations) {
    if (representation.isExact) {
      forEachItem(table, representation.instance, add);
    }
  }
  while (!found.empty()) {
    const InstanceIndex index = found.back();
    found.pop_back();
    table.forEachReference(index, [&](const Reference& reference) { add(reference.number); });
  }
  return carried;
}

}  // namespace plenvorith
