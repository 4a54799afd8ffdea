#include "tests/reference/reference_prepare.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "tests/reference/reference_face.h"
#include "tests/reference/reference_model.h"
#include "tests/reference/reference_occurrences.h"

namespace plenvorith::test {
namespace {

const Names kBodyTypes = {"TESSELLATED_SOLID", "TESSELLATED_SHELL", "TESSELLATED_GEOMETRIC_SET"};

/// Where a body stands, and the unit of its coordinates.
struct Stand {
  Placement placement;
  double unit = 1;
};

void addFace(Model& model, const Face& face, const Stand& stand) {
  const ExchangeInstance* const list = find(model, face.coordinates.text);
  if (list == nullptr) {
    return;
  }
  const Parameters& points = recordOf(*list, "COORDINATES_LIST")->at(2).items;
  std::vector<Point3> corners;
  for (const Parameter& point : points) {
    const auto number = [&](std::size_t i) {
      return std::stod(point.items.at(i).text) * stand.unit;
    };
    corners.push_back(placed(stand.placement, {number(0), number(1), number(2)}));
  }
  for (Corners triangle : trianglesOf(face, points.size())) {
    if (std::count(triangle.begin(), triangle.end(), 0U) > 0) {
      ++model.result.skipped;
      continue;
    }
    if (isMirrored(stand.placement)) {
      std::swap(triangle[1], triangle[2]);
    }
    FloatTriangle numbers{};
    for (std::size_t i = 0; i < 3; ++i) {
      const Point3& p = corners.at(triangle.at(i) - 1);
      numbers.at(3 * i) = static_cast<float>(p.x);
      numbers.at(3 * i + 1) = static_cast<float>(p.y);
      numbers.at(3 * i + 2) = static_cast<float>(p.z);
    }
    model.result.triangles.push_back(numbers);
  }
  model.result.isCopied = model.result.isCopied && stand.unit == 1 && isIdentity(stand.placement);
}

/// What a solid, shell or set is made of.
std::vector<std::string> childrenOf(const Model& model, const std::string& name) {
  std::vector<std::string> children;
  for (const std::string& type : kBodyTypes) {
    if (isA(model, name, type)) {
      collectReferences(own(model, name, type).at(0), children);
    }
  }
  return children;
}

void addItem(Model& model, const std::string& name, Stand stand) {
  if (find(model, name) == nullptr || model.annotated.count(name) == 1) {
    return;
  }
  if (isA(model, name, "REPOSITIONED_TESSELLATED_ITEM")) {
    const Parameters* const record = recordOf(*find(model, name), "REPOSITIONED_TESSELLATED_ITEM");
    stand.placement =
        product(stand.placement, placementOf(model.instances, record->back().text, stand.unit));
  }
  if (isOneOf(model, name, kFaceTypes)) {
    addFace(model, faceOf(model, name), stand);
  }
  for (const std::string& child : childrenOf(model, name)) {
    addItem(model, child, stand);
  }
}

bool holdsPartTessellation(const Model& model, const std::string& representation) {
  const std::string& group = model.groups.at(representation);
  const bool isProduct = model.products.count(group) == 1;
  return mayHoldParts(model, representation) && (isProduct || model.featured.count(group) == 0) &&
         (isOneOf(model, representation, kTessellatedRepresentations) ||
          (isProduct && isA(model, representation, "SHAPE_REPRESENTATION")));
}

/// Whether a link names a part of exact geometry.
bool isExactLink(const Model& model, const Parameter& link) {
  return link.kind == Parameter::Kind::Reference && model.exactParts.count(link.text) == 1;
}

bool isCopyByLink(const Model& model, const std::string& body) {
  for (const char* type : {"TESSELLATED_SOLID", "TESSELLATED_SHELL"}) {
    if (isA(model, body, type) && isExactLink(model, own(model, body, type).at(1))) {
      return true;
    }
  }
  if (isOneOf(model, body, kFaceTypes)) {
    return isExactLink(model, faceOf(model, body).link);
  }
  const std::vector<std::string> faces = childrenOf(model, body);
  return !faces.empty() && std::all_of(faces.begin(), faces.end(), [&](const std::string& face) {
    return isCopyByLink(model, face);
  });
}

/// Whether an exact representation is equal in place or belongs to the same product.
bool hasExactTwin(const Model& model, const std::string& group) {
  if (model.exactGroups.count(group) == 1) {
    return true;
  }
  const auto found = model.products.find(group);
  return found != model.products.end() &&
         std::any_of(model.exactGroups.begin(), model.exactGroups.end(), [&](const auto& exact) {
           const auto others = model.products.find(exact);
           return others != model.products.end() &&
                  std::any_of(found->second.begin(), found->second.end(),
                              [&](const auto& part) { return others->second.count(part) == 1; });
         });
}

void addBodies(Model& model, const std::string& representation, std::set<Names>& seen) {
  std::vector<std::string> bodies;
  collectReferences(model.representations.at(representation).at(1), bodies);
  const bool hasLinks = std::any_of(bodies.begin(), bodies.end(), [&](const std::string& body) {
    return find(model, body) != nullptr && isCopyByLink(model, body);
  });
  const std::string& group = model.groups.at(representation);
  for (const std::string& body : bodies) {
    if (find(model, body) == nullptr ||
        (hasLinks ? isCopyByLink(model, body) : hasExactTwin(model, group))) {
      continue;
    }
    // What one product holds in two representations counts once.
    const auto parts = model.products.find(group);
    if (parts != model.products.end()) {
      Names key = parts->second;
      key.insert(body);
      if (!seen.insert(key).second) {
        continue;
      }
    }
    for (const Placement& placement : placementsOfGroup(model, group)) {
      addItem(model, body, {placement, unitOf(model, representation)});
    }
  }
}

}  // namespace

ReferencePreparation referencePrepare(std::string_view step) {
  Model model = referenceModel(step);
  std::set<Names> seen;
  for (const auto& [name, parameters] : model.representations) {
    if (holdsPartTessellation(model, name)) {
      addBodies(model, name, seen);
    }
  }
  return model.result;
}

}  // namespace plenvorith::test
