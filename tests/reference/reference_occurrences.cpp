#include "tests/reference/reference_occurrences.h"

namespace plenvorith::test {
namespace {

/// M(outer) * inverse(M(inner)), each in the unit of its own representation.
Placement between(const Model& model, const std::string& outerItem, const std::string& outer,
                  const std::string& innerItem, const std::string& inner) {
  return product(placementOf(model.instances, outerItem, unitOf(model, outer)),
                 inverse(placementOf(model.instances, innerItem, unitOf(model, inner))));
}

Placement relative(const Model& model, const Relation& relation, bool partIsFirst) {
  const ExchangeInstance& transformation = *find(model, relation.transformation);
  const Parameters& items = *recordOf(transformation, "ITEM_DEFINED_TRANSFORMATION");
  const std::string& first = items.at(2).text;
  const std::string& second = items.at(3).text;
  return partIsFirst ? between(model, second, relation.second, first, relation.first)
                     : between(model, first, relation.first, second, relation.second);
}

bool isPartOf(const Model& model, const std::string& product, const std::string& representation) {
  const auto found = model.products.find(model.groups.at(representation));
  return found != model.products.end() && found->second.count(product) == 1;
}

/// How the relationship that a usage is drawn by places the part; in place where there is none.
Placement placementOfUsage(const Model& model, const std::string& usage, const std::string& part) {
  for (const auto& [name, instance] : model.instances) {
    const Parameters* const drawn = recordOf(instance, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION");
    if (drawn == nullptr || find(model, drawn->at(1).text) == nullptr ||
        own(model, drawn->at(1).text, "PRODUCT_DEFINITION_SHAPE").at(1).text != usage) {
      continue;
    }
    const Relation& relation = model.relations.at(drawn->at(0).text);
    return relative(model, relation, isPartOf(model, part, relation.first));
  }
  return {};
}

void append(Placements& placements, const Placements& outers, const Placement& inner) {
  for (const Placement& outer : outers) {
    placements.push_back(product(outer, inner));
  }
}

/// By mapped items, and by relationships with a transformation that no usage goes through.
Placements placementsByMapping(const Model& model, const std::string& group) {
  Placements placements;
  for (const auto& [holder, parameters] : model.representations) {
    std::vector<std::string> items;
    collectReferences(parameters.at(1), items);
    for (const std::string& item : items) {
      if (!mayHoldParts(model, holder) || !isA(model, item, "MAPPED_ITEM")) {
        continue;
      }
      const Parameters mapping = own(model, item, "MAPPED_ITEM");
      const Parameters& map = *recordOf(*find(model, mapping.at(0).text), "REPRESENTATION_MAP");
      const std::string& mapped = map.at(1).text;
      if (model.groups.count(mapped) == 1 && model.groups.at(mapped) == group) {
        append(placements, placementsOfGroup(model, model.groups.at(holder)),
               between(model, mapping.at(1).text, holder, map.at(0).text, mapped));
      }
    }
  }
  for (const auto& [name, relation] : model.relations) {
    if (!relation.transformation.empty() && model.usedRelations.count(name) == 0 &&
        model.groups.at(relation.first) == group) {
      append(placements, placementsOfGroup(model, model.groups.at(relation.second)),
             relative(model, relation, true));
    }
  }
  return placements;
}

Placements placementsOfProduct(const Model& model, const std::string& part) {
  Placements placements;
  for (const auto& [usage, instance] : model.instances) {
    const Parameters* const link = recordOf(instance, "NEXT_ASSEMBLY_USAGE_OCCURRENCE");
    if (link != nullptr && link->at(4).text == part) {
      append(placements, placementsOfProduct(model, link->at(3).text),
             placementOfUsage(model, usage, part));
    }
  }
  if (placements.empty()) {
    for (const auto& [group, products] : model.products) {
      if (products.count(part) == 1) {
        const Placements mapped = placementsByMapping(model, group);
        placements.insert(placements.end(), mapped.begin(), mapped.end());
      }
    }
  }
  return placements.empty() ? Placements(1) : placements;
}

}  // namespace

double unitOf(const Model& model, const std::string& representation) {
  return millimetresPerUnit(model.instances, model.representations.at(representation).at(2).text);
}

Placements placementsOfGroup(const Model& model, const std::string& group) {
  Placements placements;
  const auto found = model.products.find(group);
  if (found == model.products.end()) {
    placements = placementsByMapping(model, group);
  } else {
    for (const std::string& part : found->second) {
      append(placements, placementsOfProduct(model, part), {});
    }
  }
  return placements.empty() ? Placements(1) : placements;
}

}  // namespace plenvorith::test
