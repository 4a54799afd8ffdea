#include "tests/reference/reference_delivery.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <set>
#include <vector>

#include "tests/reference/reference_instances.h"

namespace plenvorith::test {
namespace {

const std::set<std::string> kRepresentations = {
    "SHAPE_REPRESENTATION",
    "ADVANCED_BREP_SHAPE_REPRESENTATION",
    "FACETED_BREP_SHAPE_REPRESENTATION",
    "MANIFOLD_SURFACE_SHAPE_REPRESENTATION",
    "NON_MANIFOLD_SURFACE_SHAPE_REPRESENTATION",
    "GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION",
    "GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION",
    "EDGE_BASED_WIREFRAME_SHAPE_REPRESENTATION",
    "CSG_SHAPE_REPRESENTATION",
};

const std::set<std::string> kItems = {
    "MANIFOLD_SOLID_BREP",      "BREP_WITH_VOIDS", "FACETED_BREP", "SHELL_BASED_SURFACE_MODEL",
    "FACE_BASED_SURFACE_MODEL", "ADVANCED_FACE",   "FACE_SURFACE", "GEOMETRIC_SET",
};

struct Delivery {
  ExchangeInstances instances;
  std::map<std::string, std::string> delivered{};
};

/// The instance of this name if it is a simple one of this type.
const ExchangeInstance* simple(const Delivery& delivery, const std::string& name,
                               const std::set<std::string>& types) {
  const auto found = delivery.instances.find(name);
  const bool isIt = found != delivery.instances.end() && !found->second.isComplex &&
                    types.contains(simpleType(found->second));
  return isIt ? &found->second : nullptr;
}

/// The name that an attribute of a simple instance refers to; nothing if it does not.
std::string attribute(const ExchangeInstance& instance, std::size_t place) {
  const Parameters& parameters = instance.records.begin()->second;
  return place < parameters.size() && parameters[place].kind == Parameter::Kind::Reference
             ? parameters[place].text
             : "";
}

std::vector<std::string> listed(const ExchangeInstance& instance, std::size_t place) {
  std::vector<std::string> names;
  const Parameters& parameters = instance.records.begin()->second;
  if (place < parameters.size() && parameters[place].kind == Parameter::Kind::List) {
    for (const Parameter& item : parameters[place].items) {
      if (item.kind == Parameter::Kind::Reference) {
        names.push_back(item.text);
      }
    }
  }
  return names;
}

std::string textOf(const Parameters& parameters);

std::string textOf(const Parameter& parameter) {
  // Strings that no kernel takes are emptied.
  constexpr std::size_t kMaxString = 8192;
  switch (parameter.kind) {
    case Parameter::Kind::String:
      return parameter.text.size() > kMaxString / 2 ? "''" : "'" + parameter.text + "'";
    case Parameter::Kind::List:
    case Parameter::Kind::Typed:
      return parameter.text + textOf(parameter.items);
    default:
      return parameter.text;
  }
}

std::string textOf(const Parameters& parameters) {
  std::string text = "(";
  for (const Parameter& parameter : parameters) {
    text += textOf(parameter) + ",";
  }
  return text + ")";
}

/// An item with all that it refers to, if nothing of that is missing.
void deliver(Delivery& delivery, const std::string& item) {
  std::map<std::string, std::string> texts;
  std::vector<std::string> open = {item};
  while (!open.empty()) {
    const std::string name = open.back();
    open.pop_back();
    const auto found = delivery.instances.find(name);
    if (found == delivery.instances.end()) {
      return;
    }
    std::string text;
    for (const auto& [type, parameters] : found->second.records) {
      text += type + textOf(parameters);
    }
    if (texts.emplace(name, text).second) {
      const std::vector<std::string> references = referencesOf(found->second);
      open.insert(open.end(), references.begin(), references.end());
    }
  }
  delivery.delivered.merge(texts);
}

void deliverItems(Delivery& delivery, const std::string& representation,
                  std::set<std::string>& seen) {
  const ExchangeInstance* const found = simple(delivery, representation, kRepresentations);
  if (found == nullptr || !seen.insert(representation).second) {
    return;
  }
  for (const std::string& item : listed(*found, 1)) {
    if (simple(delivery, item, kItems) != nullptr) {
      deliver(delivery, item);
    } else if (const auto* const mapped = simple(delivery, item, {"MAPPED_ITEM"})) {
      if (const auto* const map = simple(delivery, attribute(*mapped, 1), {"REPRESENTATION_MAP"})) {
        deliverItems(delivery, attribute(*map, 1), seen);
      }
    }
  }
}

/// The shape of a product, and what one relationship away is equal to it in place.
void deliverShape(Delivery& delivery, const std::string& shape) {
  if (simple(delivery, shape, kRepresentations) == nullptr) {
    return;
  }
  std::set<std::string> seen;
  deliverItems(delivery, shape, seen);
  const ExchangeInstances instances = delivery.instances;
  for (const auto& [name, instance] : instances) {
    if (simple(delivery, name, {"SHAPE_REPRESENTATION_RELATIONSHIP"}) != nullptr) {
      const std::string first = attribute(instance, 2);
      const std::string second = attribute(instance, 3);
      if (first == shape || second == shape) {
        deliverItems(delivery, first == shape ? second : first, seen);
      }
    }
  }
}

/// What the definition of a product is named by, if it has a shape.
void deliverProduct(Delivery& delivery, const ExchangeInstance& definition) {
  const auto* const shape =
      simple(delivery, attribute(definition, 0), {"PRODUCT_DEFINITION_SHAPE"});
  const std::string product = shape == nullptr ? "" : attribute(*shape, 2);
  if (simple(delivery, product, {"PRODUCT_DEFINITION"}) != nullptr) {
    delivery.delivered.emplace(product, "");
    deliverShape(delivery, attribute(definition, 1));
  }
}

}  // namespace

std::map<std::string, std::string> referenceDelivery(std::string_view step) {
  Delivery delivery{parseInstances(step)};
  std::erase_if(delivery.instances, [](const auto& instance) {
    constexpr std::size_t kMaxName = 10;  // no number of more digits is one to the kernel
    return isTessellated(instance.second) || instance.first.size() > kMaxName;
  });
  const ExchangeInstances instances = delivery.instances;
  for (const auto& [name, instance] : instances) {
    if (simple(delivery, name, {"SHAPE_DEFINITION_REPRESENTATION"}) != nullptr) {
      deliverProduct(delivery, instance);
    } else if (simple(delivery, name, {"NEXT_ASSEMBLY_USAGE_OCCURRENCE"}) != nullptr) {
      delivery.delivered.emplace(name, "");
    }
  }
  return delivery.delivered;
}

}  // namespace plenvorith::test
