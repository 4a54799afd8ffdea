#include "product/product_structure.h"

#include <set>
#include <utility>

#include "product/attributes.h"
#include "product/exact_geometry.h"
#include "product/graph.h"

namespace plenvorith {
namespace {

void readRepresentations(const InstanceTable& table, ProductStructure& structure) {
  for (const InstanceIndex index :
       table.instancesOf(Kind::Representation, Kind::TessellatedShape)) {
    const auto place = static_cast<RepresentationIndex>(structure.representations.size());
    Representation representation;
    representation.instance = index;
    representation.context = table.attribute(index, attributes::kContextOfItems);
    structure.byInstance.emplace_back(index, place);
    structure.representations.push_back(representation);
  }
  std::sort(structure.byInstance.begin(), structure.byInstance.end());
}

/// `rep_1` and `rep_2` of a relationship; `kNoRepresentation` for what is none.
std::pair<RepresentationIndex, RepresentationIndex> sidesOf(const InstanceTable& table,
                                                            const ProductStructure& structure,
                                                            InstanceIndex relationship) {
  return {structure.find(table.attribute(relationship, attributes::kRep1)),
          structure.find(table.attribute(relationship, attributes::kRep2))};
}

/// Puts together what relationships make equal in place: those all of whose records are plain ones.
void readGroups(const InstanceTable& table, ProductStructure& structure) {
  Groups groups(structure.representations.size());
  for (const InstanceIndex index : table.instancesOf(Kind::Relationship)) {
    const auto [rep1, rep2] = sidesOf(table, structure, index);
    if (table.type(index).isOnly(Kind::Relationship) && rep1 != kNoRepresentation &&
        rep2 != kNoRepresentation) {
      groups.unite(rep1, rep2);
    }
  }
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    structure.representations[i].group = groups.find(i);
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
  for (const InstanceIndex shape : table.instancesOf(Kind::ProductShape)) {
    const InstanceIndex definition = table.attribute(shape, attributes::kDefinition);
    if (definition == kNoInstance) {
      continue;
    }
    if (table.is(definition, Kind::Usage)) {
      definitions.usages.emplace(shape, definition);
    } else {
      definitions.shapes.emplace(shape, definition);
      addProduct(structure, definitions, definition);
      structure.productShapes.push_back(shape);
    }
  }
  return definitions;
}

/// Ties representations to the products, features and properties that they show.
void readShapes(const InstanceTable& table, ProductStructure& structure,
                const Definitions& definitions) {
  std::map<RepresentationIndex, std::set<ProductIndex>> products;
  for (const InstanceIndex index :
       table.instancesOf(Kind::ShapeDefinition, Kind::PropertyDefinition)) {
    const RepresentationIndex used =
        structure.find(table.attribute(index, attributes::kUsedRepresentation));
    if (used == kNoRepresentation) {
      continue;
    }
    Representation& representation = structure.representations[used];
    const auto shape =
        definitions.shapes.find(table.attribute(index, attributes::kDefinitionShown));
    if (shape == definitions.shapes.end()) {
      representation.isOfProperty = true;
      continue;
    }
    products[representation.group].insert(definitions.products.at(shape->second));
    representation.isNamedByProduct = true;
    representation.isReached = representation.isReached || table.is(index, Kind::ShapeDefinition);
  }
  for (const auto& [group, found] : products) {
    structure.productsOfGroup[group].assign(found.begin(), found.end());
  }
}

bool holdsProduct(const ProductStructure& structure, RepresentationIndex index,
                  ProductIndex product) {
  const std::vector<ProductIndex>& products = structure.productsOf(index);
  return std::binary_search(products.begin(), products.end(), product);
}

/// Whether `rep_2` of a relationship is the part: told by the products of the sides.
bool isPartSecond(const ProductStructure& structure, const Usage& usage, RepresentationIndex rep1,
                  RepresentationIndex rep2) {
  const bool isFirstPart = holdsProduct(structure, rep1, usage.part);
  const bool isSecondPart = holdsProduct(structure, rep2, usage.part);
  if (isFirstPart != isSecondPart) {
    return isSecondPart;
  }
  return holdsProduct(structure, rep1, usage.whole) && !holdsProduct(structure, rep2, usage.whole);
}

/// The relationships of usages, by usage; adds all that any usage may have to `placing`.
std::map<InstanceIndex, InstanceIndex> readUsageRelationships(const InstanceTable& table,
                                                              ProductStructure& structure,
                                                              const Definitions& definitions,
                                                              std::set<InstanceIndex>& placing) {
  std::map<InstanceIndex, InstanceIndex> relationships;
  for (const InstanceIndex index : table.instancesOf(Kind::ContextDependent)) {
    const InstanceIndex relationship = table.attribute(index, attributes::kRepresentationRelation);
    if (relationship == kNoInstance) {
      continue;
    }
    placing.insert(relationship);
    const auto [rep1, rep2] = sidesOf(table, structure, relationship);
    for (const RepresentationIndex side : {rep1, rep2}) {
      if (side != kNoRepresentation) {
        structure.representations[side].isNamedByProduct = true;
      }
    }
    const auto usage =
        definitions.usages.find(table.attribute(index, attributes::kRepresentedProductRelation));
    if (usage != definitions.usages.end()) {
      relationships.emplace(usage->second, relationship);
    }
  }
  return relationships;
}

/// Reads usages, with the relationship that places each.
void readUsages(const InstanceTable& table, ProductStructure& structure, Definitions& definitions,
                const std::map<InstanceIndex, InstanceIndex>& relationships) {
  for (const InstanceIndex index : table.instancesOf(Kind::Usage)) {
    const InstanceIndex whole = table.attribute(index, attributes::kRelatingProduct);
    const InstanceIndex part = table.attribute(index, attributes::kRelatedProduct);
    if (whole == kNoInstance || part == kNoInstance) {
      continue;
    }
    Usage usage;
    usage.whole = addProduct(structure, definitions, whole);
    usage.part = addProduct(structure, definitions, part);
    const auto relationship = relationships.find(index);
    if (relationship != relationships.end() &&
        table.is(relationship->second, Kind::Transformation)) {
      usage.relationship = relationship->second;
      const auto [rep1, rep2] = sidesOf(table, structure, usage.relationship);
      usage.isPartSecond = isPartSecond(structure, usage, rep1, rep2);
    }
    structure.usages.push_back(usage);
  }
}

void readTransformations(const InstanceTable& table, ProductStructure& structure,
                         const std::set<InstanceIndex>& ofUsages) {
  for (const InstanceIndex index : table.instancesOf(Kind::Transformation)) {
    const auto [rep1, rep2] = sidesOf(table, structure, index);
    if (ofUsages.contains(index) || rep1 == kNoRepresentation || rep2 == kNoRepresentation) {
      continue;
    }
    // A side that is no product's stands in the one that is.
    const bool isSecond = !structure.productsOf(rep1).empty() && structure.productsOf(rep2).empty();
    structure.transformations.push_back(
        {index, isSecond ? rep2 : rep1, isSecond ? rep1 : rep2, isSecond});
  }
}

void readMappings(const InstanceTable& table, ProductStructure& structure) {
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    const InstanceIndex holder = structure.representations[i].instance;
    if (table.is(holder, Kind::DraughtingModel)) {
      continue;  // shows the part once more
    }
    table.forEachItem(holder, attributes::kItems, [&](InstanceIndex item) {
      if (!table.is(item, Kind::MappedItem)) {
        return;
      }
      const InstanceIndex map = table.attribute(item, attributes::kMappingSource);
      const RepresentationIndex mapped =
          structure.find(table.attribute(map, attributes::kMappedRepresentation));
      if (mapped != kNoRepresentation) {
        structure.mappings.push_back({item, map, mapped, i});
      }
    });
  }
}

/// Marks the shapes of products and, from there, what they map.
void markOfProduct(ProductStructure& structure) {
  std::vector<std::pair<Node, Node>> mapped;
  for (const Mapping& mapping : structure.mappings) {
    mapped.emplace_back(structure.representations[mapping.holder].group,
                        structure.representations[mapping.mapped].group);
  }
  std::vector<Node> shapes;
  for (const auto& [group, products] : structure.productsOfGroup) {
    shapes.push_back(group);
  }
  const std::size_t size = structure.representations.size();
  const std::vector<bool> isShape = reach(size, shapes, Edges(size, mapped));
  for (Representation& representation : structure.representations) {
    representation.isOfProduct = isShape[representation.group];
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
  const auto found = std::lower_bound(
      byInstance.begin(), byInstance.end(), instance,
      [](const auto& entry, InstanceIndex wanted) { return entry.first < wanted; });
  return found == byInstance.end() || found->first != instance ? kNoRepresentation : found->second;
}

ProductStructure readProductStructure(const InstanceTable& table) {
  ProductStructure structure;
  readRepresentations(table, structure);
  readGroups(table, structure);
  Definitions definitions = readDefinitions(table, structure);
  readShapes(table, structure, definitions);
  std::set<InstanceIndex> ofUsages;
  const auto relationships = readUsageRelationships(table, structure, definitions, ofUsages);
  readUsages(table, structure, definitions, relationships);
  readTransformations(table, structure, ofUsages);
  readMappings(table, structure);
  markExact(table, structure);
  markReached(table, structure);
  markOfProduct(structure);
  return structure;
}

}  // namespace plenvorith
