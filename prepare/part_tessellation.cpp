#include "prepare/part_tessellation.h"

#include <algorithm>
#include <set>
#include <utility>

namespace plenvorith {
namespace {

/// An item of tessellation in a representation.
struct Item {
  InstanceIndex instance = kNoInstance;
  std::vector<InstanceIndex> repositioning;

  bool operator<(const Item& other) const {
    return std::tie(instance, repositioning) < std::tie(other.instance, other.repositioning);
  }
};

/// The items that annotation draws.
std::set<InstanceIndex> findAnnotated(const InstanceTable& table) {
  std::set<InstanceIndex> annotated;
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (!table.has(index, kAnnotation)) {
      continue;
    }
    for (const InstanceIndex item : attributesOf(table, index)) {
      if (item != kNoInstance && table.has(item, kTessellated)) {
        annotated.insert(item);
      }
    }
  }
  return annotated;
}

/// The location of a REPOSITIONED_TESSELLATED_ITEM; none if the item is no such one.
InstanceIndex locationOf(const InstanceTable& table, InstanceIndex item) {
  const std::vector<InstanceIndex> attributes =
      table.has(item, kRepositioned) && table.type(item).isComplex
          ? attributesOf(table, item, "REPOSITIONED_TESSELLATED_ITEM")
          : std::vector<InstanceIndex>();
  return attributes.empty() ? kNoInstance : attributes[0];
}

/// Finds the bodies among the items of a representation and in sets of them.
class BodyFinder {
 public:
  BodyFinder(const InstanceTable& table, const std::set<InstanceIndex>& annotated)
      : table_(table), annotated_(annotated) {}

  void find(InstanceIndex representation) {
    forEachItem(table_, representation, [this](std::uint64_t number) { visit(number, {}); });
    while (!open_.empty()) {
      const Item set = open_.back();
      open_.pop_back();
      table_.forEachReference(set.instance, [&](const Reference& reference) {
        if (reference.kind == Reference::Kind::ListItem) {
          visit(reference.number, set.repositioning);
        }
      });
    }
  }

  std::set<Item> bodies;
  bool isTooDeep = false;  // something was left out because of either
  bool hasTooMany = false;
  bool holdsTessellation = false;
  bool holdsAnnotation = false;

 private:
  void visit(std::uint64_t number, const std::vector<InstanceIndex>& repositioning) {
    const InstanceIndex index = table_.find(number);
    if (index == kNoInstance) {
      return;
    }
    holdsAnnotation = holdsAnnotation || table_.has(index, kAnnotation);
    if (!table_.has(index, kTessellated)) {
      return;
    }
    holdsTessellation = true;
    if (annotated_.contains(index)) {
      holdsAnnotation = true;
      return;
    }
    Item item{index, repositioning};
    const InstanceIndex location = locationOf(table_, index);
    if (location != kNoInstance && table_.has(index, kGeometricSet | kBody)) {
      item.repositioning.push_back(location);
    }
    if (table_.has(index, kGeometricSet)) {
      // A set is looked into once for each place where it stands. The limits are for sets that hold
      // themselves, or are held in more ways than there can be.
      constexpr std::size_t kMaxDepth = 16;
      constexpr std::size_t kMaxSets = 100'000;
      if (item.repositioning.size() > kMaxDepth) {
        isTooDeep = true;
      } else if (sets_.size() == kMaxSets && !sets_.contains(item)) {
        hasTooMany = true;
      } else if (sets_.insert(item).second) {
        open_.push_back(std::move(item));
      }
    } else if (table_.has(index, kFace | kCurvedFace | kBody)) {
      bodies.insert(std::move(item));
    }
  }

  const InstanceTable& table_;
  const std::set<InstanceIndex>& annotated_;
  std::set<Item> sets_;
  std::vector<Item> open_;
};

bool isExactItem(const InstanceTable& table, const std::vector<bool>& carried,
                 InstanceIndex index) {
  return index != kNoInstance && table.has(index, kSolid | kShell | kExactFace) && carried[index];
}

/// Whether the body names its exact twin, or each of its faces one.
bool isLinked(const InstanceTable& table, const std::vector<bool>& carried, InstanceIndex body) {
  if (table.has(body, kBody)) {
    const EntityType& type = table.type(body);
    bool isOwn = false;
    table.forEachReference(body, [&](const Reference& reference) {
      const bool isLink = reference.kind == Reference::Kind::Attribute &&
                          (isInRecord(type, reference, "TESSELLATED_SOLID") ||
                           isInRecord(type, reference, "TESSELLATED_SHELL"));
      isOwn = isOwn || (isLink && isExactItem(table, carried, table.find(reference.number)));
    });
    if (isOwn) {
      return true;
    }
  }
  Warnings ignored;
  const std::vector<InstanceIndex> faces = facesOf(table, body, ignored);
  return !faces.empty() && std::all_of(faces.begin(), faces.end(), [&](InstanceIndex face) {
    return isExactItem(table, carried, readFaceLinks(table, face).geometry);
  });
}

/// What has exact geometry: groups of representations, and products.
struct Exact {
  std::set<RepresentationIndex> groups;
  std::set<ProductIndex> products;
};

Exact findExact(const ProductStructure& structure) {
  Exact exact;
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    if (structure.representations[i].isExact) {
      exact.groups.insert(structure.representations[i].group);
      const std::vector<ProductIndex>& products = structure.productsOf(i);
      exact.products.insert(products.begin(), products.end());
    }
  }
  return exact;
}

/// Whether exact geometry stands where the representation does.
bool isPaired(const ProductStructure& structure, const Exact& exact, RepresentationIndex index) {
  const std::vector<ProductIndex>& products = structure.productsOf(index);
  return exact.groups.contains(structure.representations[index].group) ||
         std::any_of(products.begin(), products.end(),
                     [&exact](ProductIndex product) { return exact.products.contains(product); });
}

/// Leaves out bodies of representations that are no product's, where a product has the same body.
void removeStray(Occurrences& occurrences, std::set<Body>& bodies) {
  std::set<InstanceIndex> ofProducts;
  for (const Body& body : bodies) {
    if (occurrences.isProduct(body.node)) {
      ofProducts.insert(body.instance);
    }
  }
  std::erase_if(bodies, [&](const Body& body) {
    return !occurrences.isProduct(body.node) && ofProducts.contains(body.instance) &&
           !occurrences.isPlaced(body.node);
  });
}

}  // namespace

FaceLinks readFaceLinks(const InstanceTable& table, InstanceIndex face) {
  FaceLinks links;
  const EntityType& type = table.type(face);
  table.forEachReference(face, [&](const Reference& reference) {
    if (reference.kind != Reference::Kind::Attribute) {
      return;
    }
    std::uint32_t attribute = reference.attribute;
    if (type.isComplex) {
      if (isInRecord(type, reference, "REPOSITIONED_TESSELLATED_ITEM")) {
        links.location = table.find(reference.number);
        return;
      }
      attribute += 1;  // the name stands in a record of its own
    }
    const InstanceIndex named = table.find(reference.number);
    if (attribute == 1 && named != kNoInstance && table.has(named, kCoordinates)) {
      links.coordinates = named;
    } else if (attribute == 4) {
      links.geometry = named;
    }
  });
  return links;
}

std::vector<InstanceIndex> facesOf(const InstanceTable& table, InstanceIndex body,
                                   Warnings& warnings) {
  std::vector<InstanceIndex> faces;
  std::vector<InstanceIndex> open = {body};
  std::set<InstanceIndex> shells;
  while (!open.empty()) {
    const InstanceIndex index = open.back();
    open.pop_back();
    if (table.has(index, kCurvedFace)) {
      warnings.insert("curved triangles (CUBIC_BEZIER_TRIANGULATED_FACE) are left out");
    } else if (table.has(index, kFace)) {
      faces.push_back(index);
    } else if (table.has(index, kBody) && shells.insert(index).second) {
      const std::size_t before = open.size();
      table.forEachReference(index, [&](const Reference& reference) {
        const InstanceIndex item = reference.kind == Reference::Kind::ListItem
                                       ? table.find(reference.number)
                                       : kNoInstance;
        if (item != kNoInstance) {
          open.push_back(item);
        }
      });
      std::reverse(open.begin() + static_cast<std::ptrdiff_t>(before), open.end());
    }
  }
  return faces;
}

PartTessellation findPartTessellation(const InstanceTable& table, const ProductStructure& structure,
                                      Occurrences& occurrences, Warnings& warnings) {
  PartTessellation part;
  const std::set<InstanceIndex> annotated = findAnnotated(table);
  const Exact exact = findExact(structure);
  part.hasExact = !exact.groups.empty();
  const std::vector<bool> carried =
      part.hasExact ? findCarried(table, structure) : std::vector<bool>(table.size());
  std::set<Body> bodies;
  std::set<InstanceIndex> copies;
  std::set<std::pair<InstanceIndex, Node>> copied;
  for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
    const Representation& representation = structure.representations[i];
    const bool isTessellatedShape = table.has(representation.instance, kTessellatedShape);
    BodyFinder finder(table, annotated);
    finder.find(representation.instance);
    if (!isTessellatedShape && !finder.holdsTessellation) {
      continue;
    }
    ++part.representationCount;
    if (table.has(representation.instance, kDraughtingModel) ||
        (finder.bodies.empty() && finder.holdsAnnotation)) {
      ++part.annotationCount;
      continue;
    }
    if (representation.isOfProperty && !representation.isOfProduct) {
      ++part.propertyCount;
      continue;
    }
    const bool isPlainShape =
        table.has(representation.instance, kShapeRepresentation) && representation.isOfProduct;
    if (!isTessellatedShape && !isPlainShape) {
      continue;
    }
    if (finder.isTooDeep) {
      warnings.insert("sets of tessellation in more than 16 placements of sets are left out");
    }
    if (finder.hasTooMany) {
      warnings.insert("of the sets of tessellation in a shape, those after 100,000 are left out");
    }
    std::set<InstanceIndex> linked;
    for (const Item& item : finder.bodies) {
      if (part.hasExact && isLinked(table, carried, item.instance)) {
        linked.insert(item.instance);
      }
    }
    const bool areAllCopies = linked.empty() && isPaired(structure, exact, i);
    for (const Item& item : finder.bodies) {
      const bool isCopy = areAllCopies || linked.contains(item.instance);
      for (const Node node : occurrences.nodesOf(i)) {
        if (isCopy) {
          copies.insert(item.instance);
          copied.emplace(item.instance, node);
        } else {
          bodies.insert({item.instance, i, node, item.repositioning});
        }
      }
    }
  }
  std::erase_if(bodies, [&](const Body& body) {
    return copied.contains({body.instance, body.node});
  });
  removeStray(occurrences, bodies);
  part.bodies.assign(bodies.begin(), bodies.end());
  part.copies.assign(copies.begin(), copies.end());
  return part;
}

}  // namespace plenvorith
