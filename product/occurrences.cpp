#include "product/occurrences.h"

#include <algorithm>
#include <utility>

namespace plenvorith {

Occurrences::Occurrences(const ProductStructure& structure, InstanceReader& reader,
                         Warnings& warnings)
    : structure_(structure), reader_(reader), warnings_(warnings) {
  for (std::size_t i = 0; i < structure.usages.size(); ++i) {
    usagesOfPart_.emplace(structure.usages[i].part, i);
  }
  for (std::size_t i = 0; i < structure.mappings.size(); ++i) {
    for (const Node node : nodesOf(structure.mappings[i].mapped)) {
      mappingsOfNode_.emplace(node, i);
    }
  }
  for (std::size_t i = 0; i < structure.transformations.size(); ++i) {
    for (const Node node : nodesOf(structure.transformations[i].part)) {
      transformationsOfNode_.emplace(node, i);
    }
  }
}

std::vector<Node> Occurrences::nodesOf(RepresentationIndex representation) const {
  const std::vector<ProductIndex>& products = structure_.productsOf(representation);
  if (!products.empty()) {
    return products;
  }
  const auto group = structure_.representations[representation].group;
  return {static_cast<Node>(structure_.products.size()) + group};
}

bool Occurrences::isInNode(RepresentationIndex representation, Node node) const {
  const std::vector<Node> nodes = nodesOf(representation);
  return std::find(nodes.begin(), nodes.end(), node) != nodes.end();
}

double Occurrences::unitOf(RepresentationIndex representation) {
  const InstanceIndex context = structure_.representations[representation].context;
  const auto known = units_.find(context);
  if (known != units_.end()) {
    return known->second;
  }
  const std::optional<double> unit = readUnit(reader_, context);
  if (!unit) {
    warnings_.insert("no unit of length, millimetres are taken");
  }
  return units_[context] = unit.value_or(1.0);
}

Placement Occurrences::placementOf(InstanceIndex item, RepresentationIndex representation) {
  const double unit = representation == kNoRepresentation ? 1.0 : unitOf(representation);
  const std::optional<Placement> placement = readPlacement(reader_, item, unit);
  if (!placement) {
    warnings_.insert("a placement is missing or of an unknown kind, none is taken");
  }
  return placement.value_or(Placement());
}

/// Where a relationship's transformation puts its part in the frame of its whole.
Placement Occurrences::placementOf(InstanceIndex relationship, bool isPartSecond) {
  const InstanceTable& table = reader_.table();
  const std::vector<InstanceIndex> sides =
      attributesOf(table, relationship, "REPRESENTATION_RELATIONSHIP");
  const bool isComplex = table.type(relationship).isComplex;
  const std::vector<InstanceIndex> operators =
      attributesOf(table, relationship, "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION");
  const std::size_t place = isComplex ? 0 : 2;
  const InstanceIndex transformation = operators.size() > place ? operators[place] : kNoInstance;
  if (transformation == kNoInstance || sides.size() < 2) {
    return placementOf(kNoInstance, kNoRepresentation);
  }
  const RepresentationIndex part = structure_.find(sides[isPartSecond ? 1 : 0]);
  const RepresentationIndex whole = structure_.find(sides[isPartSecond ? 0 : 1]);
  if (!table.has(transformation, kItemTransformation)) {
    const Placement placement = placementOf(transformation, whole);
    return isPartSecond ? inverse(placement).value_or(placement) : placement;
  }
  const std::vector<InstanceIndex> items = attributesOf(table, transformation);
  const auto item = [&items](std::size_t i) { return items.size() > i ? items[i] : kNoInstance; };
  const Placement inner = placementOf(item(isPartSecond ? 1 : 0), part);
  const Placement outer = placementOf(item(isPartSecond ? 0 : 1), whole);
  return outer * inverse(inner).value_or(Placement());
}

void Occurrences::addUsages(ProductIndex product, std::vector<Edge>& edges) {
  const auto [begin, end] = usagesOfPart_.equal_range(product);
  for (auto entry = begin; entry != end; ++entry) {
    const Usage& usage = structure_.usages[entry->second];
    if (usage.relationship != kNoInstance) {
      edges.push_back({usage.whole, placementOf(usage.relationship, usage.isPartSecond)});
      continue;
    }
    // The whole may map the shape of the part instead.
    const std::size_t before = edges.size();
    const bool isRepeated = std::any_of(begin, entry, [this, &usage](const auto& other) {
      const Usage& earlier = structure_.usages[other.second];
      return earlier.relationship == kNoInstance && earlier.whole == usage.whole;
    });
    if (!isRepeated) {
      addMappings(product, &usage.whole, edges);
    }
    const auto isMapped = [this, &usage](const auto& mapping) {
      return isInNode(structure_.mappings[mapping.second].holder, usage.whole);
    };
    const auto [first, last] = mappingsOfNode_.equal_range(product);
    if (edges.size() == before && !std::any_of(first, last, isMapped)) {
      warnings_.insert("a usage of a product has no placement, none is taken");
      edges.push_back({usage.whole, Placement()});
    }
  }
}

/// Adds the mappings of a node in representations of other nodes, or in those of one product.
void Occurrences::addMappings(Node node, const ProductIndex* inProduct, std::vector<Edge>& edges) {
  const auto [begin, end] = mappingsOfNode_.equal_range(node);
  for (auto entry = begin; entry != end; ++entry) {
    const Mapping& mapping = structure_.mappings[entry->second];
    for (const Node above : nodesOf(mapping.holder)) {
      const bool isMeant = inProduct != nullptr
                               ? above == *inProduct
                               : !isProduct(node) || (isProduct(above) && above != node);
      if (!isMeant) {
        continue;
      }
      const InstanceTable& table = reader_.table();
      const Placement target = placementOf(table.attribute(mapping.item, 1), mapping.holder);
      const Placement origin = placementOf(table.attribute(mapping.map, 0), mapping.mapped);
      edges.push_back({above, target * inverse(origin).value_or(Placement())});
    }
  }
}

void Occurrences::addTransformations(Node node, std::vector<Edge>& edges) {
  const auto [begin, end] = transformationsOfNode_.equal_range(node);
  for (auto entry = begin; entry != end; ++entry) {
    const Transformation& transformation = structure_.transformations[entry->second];
    if (isInNode(transformation.whole, node)) {
      continue;
    }
    for (const Node above : nodesOf(transformation.whole)) {
      edges.push_back(
          {above, placementOf(transformation.relationship, transformation.isPartSecond)});
    }
  }
}

std::vector<Occurrences::Edge> Occurrences::edgesOf(Node node) {
  std::vector<Edge> edges;
  if (isProduct(node)) {
    addUsages(node, edges);
  }
  if (edges.empty()) {
    addMappings(node, nullptr, edges);
  }
  if (edges.empty()) {
    addTransformations(node, edges);
  }
  return edges;
}

/// Puts the placements of a node together from those of the nodes above it.
void Occurrences::finish(Found& found) {
  found.isDone = true;
  for (const Edge& edge : found.edges) {
    for (const Placement& above : found_[edge.above].placements) {
      if (++count_ > kMaxCount) {
        return;
      }
      found.placements.push_back(above * edge.placement);
    }
  }
  if (found.edges.empty()) {
    found.placements.emplace_back();
  }
}

const std::vector<Placement>& Occurrences::placementsOf(Node node) {
  std::vector<Node> path;
  const auto enter = [&](Node next) {
    Found& found = found_[next];
    found.edges = edgesOf(next);
    path.push_back(next);
  };
  if (!found_.contains(node)) {
    enter(node);
  }
  while (!path.empty()) {
    Found& found = found_[path.back()];
    if (found.next == found.edges.size()) {
      finish(found);
      path.pop_back();
      continue;
    }
    const Node above = found.edges[found.next].above;
    const auto known = found_.find(above);
    if (known == found_.end()) {
      ++found.next;
      enter(above);
    } else if (known->second.isDone) {
      ++found.next;
    } else {
      warnings_.insert("a product is part of itself");
      found.edges.erase(found.edges.begin() + static_cast<std::ptrdiff_t>(found.next));
    }
  }
  static const std::vector<Placement> none;
  return count_ > kMaxCount ? none : found_[node].placements;
}

bool Occurrences::isPlaced(Node node) {
  (void)placementsOf(node);
  return !found_[node].edges.empty();
}

}  // namespace plenvorith
