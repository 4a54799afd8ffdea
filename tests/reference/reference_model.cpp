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

/// The representations that mapped items of these show, and those themselves.
Names withMapped(const Model& model, Names representations) {
  std::vector<std::string> open(representations.begin(), representations.end());
  while (!open.empty()) {
    std::vector<std::string> items;
    const auto holder = model.representations.find(open.back());
    open.pop_back();
    if (holder != model.representations.end()) {
      collectReferences(holder->second.at(1), items);
    }
    for (const std::string& item : items) {
      if (isA(model, item, "MAPPED_ITEM")) {
        const std::string map = own(model, item, "MAPPED_ITEM").at(0).text;
        const std::string mapped = recordOf(*find(model, map), "REPRESENTATION_MAP")->at(1).text;
        if (representations.insert(mapped).second) {
          open.push_back(mapped);
        }
      }
    }
  }
  return representations;
}

/// What the kernel comes to: shapes of products, over one simple relationship of shapes.
Names findReached(const Model& model) {
  Names shapes;
  for (const auto& [name, instance] : model.instances) {
    const Parameters* const link = recordOf(instance, "SHAPE_DEFINITION_REPRESENTATION");
    if (link != nullptr && isA(model, link->at(0).text, "PRODUCT_DEFINITION_SHAPE")) {
      shapes.insert(link->at(1).text);
    }
  }
  Names reached = shapes;
  for (const auto& [name, relation] : model.relations) {
    if (simpleType(*find(model, name)) != "SHAPE_REPRESENTATION_RELATIONSHIP") {
      continue;
    }
    if (shapes.count(relation.first) == 1) {
      reached.insert(relation.second);
    }
    if (shapes.count(relation.second) == 1) {
      reached.insert(relation.first);
    }
  }
  return withMapped(model, reached);
}

/// The same with what relationships that place something set beside it.
Names withPlaced(const Model& model, Names reached) {
  for (bool isMore = true; isMore;) {
    isMore = false;
    for (const auto& [name, relation] : model.relations) {
      if (!relation.transformation.empty() &&
          reached.count(relation.first) != reached.count(relation.second)) {
        reached.insert({relation.first, relation.second});
        isMore = true;
      }
    }
  }
  return reached;
}

/// Whether the kernel makes faces of what a representation holds, also by mapping.
bool isExact(const Model& model, const std::string& representation) {
  const Names items = itemsOf(model, representation);
  return !isA(model, representation, "DRAUGHTING_MODEL") &&
         std::any_of(items.begin(), items.end(), [&](const std::string& item) {
           return isOneOf(model, item, kModels) ||
                  isOneOf(model, item, {"ADVANCED_FACE", "FACE_SURFACE"});
         });
}

void findExactGeometry(Model& model) {
  const Names reached = findReached(model);
  const Names near = withPlaced(model, reached);
  Names exact;
  bool hasProductExact = false;
  for (const auto& [name, parameters] : model.representations) {
    if (isExact(model, name)) {
      exact.insert(name);
      hasProductExact = hasProductExact || near.count(name) == 1;
    }
  }
  model.result.hasExactGeometry = !exact.empty();
  // What no product has is tied to one, if none has any.
  for (const std::string& name : exact) {
    if (!hasProductExact || reached.count(name) == 1) {
      for (const std::string& item : itemsOf(model, name)) {
        collectExactParts(model, item);
      }
      model.exactGroups.insert(model.groups.at(name));
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
