#include "tests/reference/reference_model.h"

#include <algorithm>
#include <vector>

namespace plenvorith::test {
namespace {

void findRepresentations(Model& model) {
  for (const auto& [name, instance] : model.instances) {
    for (const auto& [type, parameters] : instance.records) {
      const bool isShape = type == "REPRESENTATION" || type.ends_with("SHAPE_REPRESENTATION") ||
                           kTessellatedRepresentations.count(type) == 1;
      if (isShape && parameters.size() >= 3) {
        model.representations[name] = parameters;
        model.groups[name] = name;
      }
    }
  }
}

void findRelations(Model& model) {
  for (const auto& [name, instance] : model.instances) {
    for (const char* type : {"SHAPE_REPRESENTATION_RELATIONSHIP", "REPRESENTATION_RELATIONSHIP"}) {
      const Parameters* const parameters = recordOf(instance, type);
      if (parameters == nullptr || parameters->size() < 4) {
        continue;
      }
      const Parameters* const placing =
          recordOf(instance, "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION");
      model.relations[name] = {parameters->at(2).text, parameters->at(3).text,
                               placing == nullptr ? "" : placing->at(0).text};
    }
    if (const Parameters* const usage =
            recordOf(instance, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION")) {
      model.usedRelations.insert(usage->at(0).text);
    }
  }
  for (const auto& [name, relation] : model.relations) {
    const auto first = model.groups.find(relation.first);
    const auto second = model.groups.find(relation.second);
    if (!relation.transformation.empty() || first == model.groups.end() ||
        second == model.groups.end()) {
      continue;
    }
    const std::string from = first->second;
    const std::string to = second->second;
    for (auto& [representation, group] : model.groups) {
      group = group == from ? to : group;
    }
  }
}

void findProducts(Model& model) {
  for (const auto& [name, instance] : model.instances) {
    for (const char* type :
         {"SHAPE_DEFINITION_REPRESENTATION", "PROPERTY_DEFINITION_REPRESENTATION"}) {
      const Parameters* const link = recordOf(instance, type);
      if (link == nullptr || model.groups.count(link->at(1).text) == 0) {
        continue;
      }
      const std::string& group = model.groups.at(link->at(1).text);
      const std::string& property = link->at(0).text;
      const std::string product = isA(model, property, "PRODUCT_DEFINITION_SHAPE")
                                      ? own(model, property, "PRODUCT_DEFINITION_SHAPE").at(1).text
                                      : "";
      if (isA(model, product, "PRODUCT_DEFINITION")) {
        model.products[group].insert(product);
      } else {
        model.featured.insert(group);
      }
    }
  }
}

/// The items of a representation, and what its mapped items stand for.
Names itemsOf(const Model& model, const std::string& representation, int depth = 0) {
  Names items;
  std::vector<std::string> references;
  collectReferences(model.representations.at(representation).at(1), references);
  for (const std::string& item : references) {
    items.insert(item);
    if (isA(model, item, "MAPPED_ITEM") && depth < 10) {
      const std::string map = own(model, item, "MAPPED_ITEM").at(0).text;
      const std::string mapped = recordOf(*find(model, map), "REPRESENTATION_MAP")->at(1).text;
      if (model.representations.count(mapped) == 1) {
        items.merge(itemsOf(model, mapped, depth + 1));
      }
    }
  }
  return items;
}

const Names kShellsAndFaces = {"CLOSED_SHELL",        "OPEN_SHELL",    "ORIENTED_CLOSED_SHELL",
                               "ORIENTED_OPEN_SHELL", "ADVANCED_FACE", "FACE_SURFACE"};
const Names kModels = {"MANIFOLD_SOLID_BREP", "BREP_WITH_VOIDS", "FACETED_BREP",
                       "SHELL_BASED_SURFACE_MODEL", "FACE_BASED_SURFACE_MODEL"};

void collectExactParts(Model& model, const std::string& name) {
  if (!(isOneOf(model, name, kModels) || isOneOf(model, name, kShellsAndFaces)) ||
      !model.exactParts.insert(name).second) {
    return;
  }
  for (const std::string& reference : referencesOf(*find(model, name))) {
    collectExactParts(model, reference);
  }
}

void findExactGeometry(Model& model) {
  for (const auto& [name, parameters] : model.representations) {
    for (const std::string& item : itemsOf(model, name)) {
      if (isOneOf(model, item, kModels) || isOneOf(model, item, kShellsAndFaces)) {
        collectExactParts(model, item);
        model.exactGroups.insert(model.groups.at(name));
        model.result.hasExactGeometry = true;
      }
    }
  }
}

void findAnnotations(Model& model) {
  for (const auto& [name, instance] : model.instances) {
    for (const auto& [type, parameters] : instance.records) {
      if (type.ends_with("ANNOTATION_OCCURRENCE")) {
        for (const std::string& reference : referencesOf(instance)) {
          model.annotated.insert(reference);
        }
      }
    }
  }
}

}  // namespace

const ExchangeInstance* find(const Model& model, const std::string& name) {
  const auto found = model.instances.find(name);
  return found == model.instances.end() ? nullptr : &found->second;
}

bool isA(const Model& model, const std::string& name, const std::string& type) {
  const ExchangeInstance* const instance = find(model, name);
  return instance != nullptr && recordOf(*instance, type) != nullptr;
}

bool isOneOf(const Model& model, const std::string& name, const Names& types) {
  return std::any_of(types.begin(), types.end(),
                     [&](const std::string& type) { return isA(model, name, type); });
}

Parameters own(const Model& model, const std::string& name, const std::string& type) {
  const ExchangeInstance& instance = *find(model, name);
  Parameters parameters = *recordOf(instance, type);
  if (!instance.isComplex) {
    parameters.erase(parameters.begin());
  }
  return parameters;
}

bool mayHoldParts(const Model& model, const std::string& representation) {
  return !isA(model, representation, "DRAUGHTING_MODEL") && model.groups.count(representation) == 1;
}

Model referenceModel(std::string_view step) {
  Model model{parseInstances(step)};
  findRepresentations(model);
  findRelations(model);
  findProducts(model);
  findExactGeometry(model);
  findAnnotations(model);
  return model;
}

}  // namespace plenvorith::test
