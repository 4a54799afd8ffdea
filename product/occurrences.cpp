#include "product/occurrences.h"

#include <algorithm>
#include <set>
#include <utility>

#include "product/attributes.h"
#include "product/units.h"

namespace plenvorith {

Occurrences::Occurrences(const ProductStructure& structure, InstanceReader& reader,
                         Warnings& warnings)
    : structure_(structure), reader_(reader), warnings_(warnings) {
  const std::size_t size = structure.products.size() + structure.representations.size();
  std::vector<std::pair<Node, Node>> usages;
  for (const Usage& usage : structure.usages) {
    usages.emplace_back(usage.part, usage.whole);
  }
  const auto byNode = [&](const auto& all, auto representationOf) {
    std::vector<std::pair<Node, Node>> found;
    for (Node i = 0; i < all.size() && found.size() <= kMaxCount; ++i) {
      for (const Node node : nodesOf(representationOf(all[i]))) {
        found.emplace_back(node, i);
      }
    }
    hasTooMany_ = hasTooMany_ || found.size() > kMaxCount;
    return Edges(size, found);
  };
  const Edges mappings = byNode(structure.mappings, [](const Mapping& m) { return m.mapped; });
  const Edges transformations =
      byNode(structure.transformations, [](const Transformation& t) { return t.part; });
  const Edges usagesOfPart(size, usages);
  for (Node node = 0; node < size; ++node) {
    begins_.push_back(steps_.size());
    addSteps(node, usagesOfPart, mappings, transformations);
    hasTooMany_ = hasTooMany_ || steps_.size() > kMaxCount + structure.usages.size();
  }
  begins_.push_back(steps_.size());
  placements_.resize(size);
  findCycles();
  countAll();
}

std::vector<Node> Occurrences::nodesOf(RepresentationIndex representation) const {
  const std::vector<ProductIndex>& products = structure_.productsOf(representation);
  if (!products.empty()) {
    return products;
  }
  const auto group = structure_.representations[representation].group;
  return {static_cast<Node>(structure_.products.size()) + group};
}

void Occurrences::addSteps(Node node, const Edges& usages, const Edges& mappings,
                           const Edges& transformations) {
  if (hasTooMany_) {
    return;
  }
  if (isProduct(node)) {
    addUsages(node, usages, mappings);
  }
  if (steps_.size() == begins_.back()) {
    addMappings(node, mappings);
  }
  if (steps_.size() > begins_.back()) {
    return;
  }
  for (const std::uint32_t i : transformations.from(node)) {
    if (steps_.size() > kMaxCount) {
      return;
    }
    const std::vector<Node> above = nodesOf(structure_.transformations[i].whole);
    if (std::find(above.begin(), above.end(), node) == above.end()) {
      for (const Node whole : above) {
        steps_.push_back({Step::Kind::Transformation, false, whole, i});
      }
    }
  }
}

void Occurrences::addUsages(ProductIndex product, const Edges& usages, const Edges& mappings) {
  // Where a usage has no placement, the whole may map the shape of the part instead.
  std::map<Node, std::vector<std::uint32_t>> mapped;
  std::set<Node> taken;
  for (const std::uint32_t i : usages.placesFrom(product)) {
    const Usage& usage = structure_.usages[i];
    if (usage.relationship != kNoInstance) {
      steps_.push_back({Step::Kind::Usage, false, usage.whole, i});
      continue;
    }
    if (taken.empty()) {
      for (const std::uint32_t mapping : mappings.from(product)) {
        for (const Node above : nodesOf(structure_.mappings[mapping].holder)) {
          mapped[above].push_back(mapping);
        }
      }
    }
    const bool isFirst = taken.insert(usage.whole).second;
    const auto found = mapped.find(usage.whole);
    if (found == mapped.end()) {
      steps_.push_back({Step::Kind::UnplacedUsage, false, usage.whole, i});
    } else if (isFirst) {
      for (const std::uint32_t mapping : found->second) {
        steps_.push_back({Step::Kind::Mapping, false, usage.whole, mapping});
      }
    }
  }
}

/// Adds the mappings of a node in representations of other nodes.
void Occurrences::addMappings(Node node, const Edges& mappings) {
  for (const std::uint32_t mapping : mappings.from(node)) {
    if (steps_.size() > kMaxCount) {
      return;
    }
    for (const Node above : nodesOf(structure_.mappings[mapping].holder)) {
      if (!isProduct(node) || (isProduct(above) && above != node)) {
        steps_.push_back({Step::Kind::Mapping, false, above, mapping});
      }
    }
  }
}

std::vector<std::pair<Node, Node>> Occurrences::stepsDown() const {
  std::vector<std::pair<Node, Node>> down;
  for (Node node = 0; node + 1 < begins_.size(); ++node) {
    for (std::size_t i = begins_[node]; i < begins_[node + 1]; ++i) {
      down.emplace_back(steps_[i].above, node);
    }
  }
  return down;
}

/// Finds the steps that would have a node stand in itself, whatever is asked for first.
void Occurrences::findCycles() {
  std::vector<Node> wholes;
  for (const Usage& usage : structure_.usages) {
    wholes.push_back(usage.whole);
  }
  Descent descent = descend(placements_.size(), stepsDown(), wholes);
  order_ = std::move(descent.order);
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    steps_[i].closesCycle = descent.closesCycle[i];
  }
  std::vector<std::pair<Node, Node>> mapped;
  for (const Mapping& mapping : structure_.mappings) {
    mapped.emplace_back(mapping.holder, mapping.mapped);
  }
  const Descent down = descend(structure_.representations.size(), mapped);
  hasMappingCycle_ =
      std::find(down.closesCycle.begin(), down.closesCycle.end(), true) != down.closesCycle.end();
}

void Occurrences::countAll() {
  counts_.resize(placements_.size());
  for (const Node node : order_) {
    std::size_t count = 0;
    for (std::size_t i = begins_[node]; i < begins_[node + 1]; ++i) {
      count += steps_[i].closesCycle ? 0 : counts_[steps_[i].above];
      count = std::min(count, kMaxCount + 1);
    }
    counts_[node] = std::max<std::size_t>(count, 1);
  }
}

bool Occurrences::isPlaced(Node node) const {
  for (std::size_t i = begins_[node]; i < begins_[node + 1]; ++i) {
    if (!steps_[i].closesCycle) {
      return true;
    }
  }
  return false;
}

std::vector<bool> Occurrences::withAllAbove(const std::vector<Node>& nodes) const {
  return reach(placements_.size(), nodes, [this](Node node, auto visit) {
    for (std::size_t i = begins_[node]; i < begins_[node + 1]; ++i) {
      visit(steps_[i].above);
    }
  });
}

bool Occurrences::place(const std::vector<Node>& nodes) {
  if (nodes.empty()) {
    return true;
  }
  const std::vector<bool> isWanted = withAllAbove(nodes);
  std::size_t count = hasTooMany_ ? kMaxCount + 1 : 0;
  for (Node node = 0; node < isWanted.size() && count <= kMaxCount; ++node) {
    count += isWanted[node] ? counts_[node] : 0;
  }
  if (count > kMaxCount) {
    return false;
  }
  if (hasMappingCycle_) {
    warnings_.insert("a representation maps itself");
  }
  for (const Node node : order_) {
    if (isWanted[node] && placements_[node].empty()) {
      placeNode(node);
    }
  }
  return true;
}

/// Puts the placements of a node together from those of the nodes above it.
void Occurrences::placeNode(Node node) {
  std::vector<Placement>& placements = placements_[node];
  placements.reserve(counts_[node]);
  for (std::size_t i = begins_[node]; i < begins_[node + 1]; ++i) {
    if (steps_[i].closesCycle) {
      warnings_.insert("a product is part of itself");
      continue;
    }
    const Placement step = placementOf(steps_[i]);
    for (const Placement& above : placements_[steps_[i].above]) {
      placements.push_back(above * step);
    }
  }
  if (placements.empty()) {
    placements.emplace_back();
  }
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

Placement Occurrences::placementOf(const Step& step) {
  switch (step.kind) {
    case Step::Kind::Usage: {
      const Usage& usage = structure_.usages[step.index];
      return placementOfRelationship(usage.relationship, usage.isPartSecond);
    }
    case Step::Kind::Mapping:
      return placementOfMapping(structure_.mappings[step.index]);
    case Step::Kind::Transformation: {
      const Transformation& transformation = structure_.transformations[step.index];
      return placementOfRelationship(transformation.relationship, transformation.isPartSecond);
    }
    case Step::Kind::UnplacedUsage:
      break;
  }
  warnings_.insert("a usage of a product has no placement, none is taken");
  return {};
}

Placement Occurrences::placementOfMapping(const Mapping& mapping) {
  const InstanceTable& table = reader_.table();
  const Placement target =
      placementOf(table.attribute(mapping.item, attributes::kMappingTarget), mapping.holder);
  const Placement origin =
      placementOf(table.attribute(mapping.map, attributes::kMappingOrigin), mapping.mapped);
  return target * inverse(origin).value_or(Placement());
}

/// Where a relationship's transformation puts its part in the frame of its whole.
Placement Occurrences::placementOfRelationship(InstanceIndex relationship, bool isPartSecond) {
  const InstanceTable& table = reader_.table();
  const InstanceIndex transformation =
      table.attribute(relationship, attributes::kTransformationOperator);
  if (transformation == kNoInstance) {
    return placementOf(kNoInstance, kNoRepresentation);
  }
  const auto side = [&](bool isSecond) {
    return structure_.find(
        table.attribute(relationship, isSecond ? attributes::kRep2 : attributes::kRep1));
  };
  if (!table.is(transformation, Kind::ItemTransformation)) {
    const Placement placement = placementOf(transformation, side(!isPartSecond));
    return isPartSecond ? inverse(placement).value_or(placement) : placement;
  }
  const auto item = [&](bool isSecond) {
    return placementOf(table.attribute(transformation, isSecond ? attributes::kTransformItem2
                                                                : attributes::kTransformItem1),
                       side(isSecond));
  };
  const Placement inner = item(isPartSecond);
  const Placement outer = item(!isPartSecond);
  return outer * inverse(inner).value_or(Placement());
}

}  // namespace plenvorith
