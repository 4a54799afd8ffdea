#include "prepare/part_tessellation.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "product/attributes.h"
#include "product/exact_geometry.h"

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

/// ..._ANNOTATION_OCCURRENCE is a STYLED_ITEM(name, styles, item).
constexpr Attribute kStyledItem = {"STYLED_ITEM", 1, 2};
constexpr Attribute kLocation = {"REPOSITIONED_TESSELLATED_ITEM", 0, 1};
constexpr Attribute kSolidLink = {"TESSELLATED_SOLID", 1, 2};
constexpr Attribute kShellLink = {"TESSELLATED_SHELL", 1, 2};
constexpr Attribute kFaceCoordinates = {"TESSELLATED_FACE", 0, 1};
constexpr Attribute kSetCoordinates = {"TESSELLATED_SURFACE_SET", 0, 1};
constexpr Attribute kFaceLink = {"TESSELLATED_FACE", 3, 4};

/// More items than this are in no real file, however often one is counted.
constexpr std::size_t kMaxItems = std::size_t{1} << 22U;

/// The items that annotation draws.
std::vector<bool> findAnnotated(const InstanceTable& table) {
  std::vector<bool> annotated(table.size());
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    const InstanceIndex item =
        table.is(index, Kind::Annotation) ? table.attribute(index, kStyledItem) : kNoInstance;
    if (item != kNoInstance) {
      annotated[item] = true;
    }
  }
  return annotated;
}

/// Finds the bodies among the items of representations and in sets of them.
class BodyFinder {
 public:
  BodyFinder(const InstanceTable& table, Warnings& warnings)
      : table_(table), warnings_(warnings), annotated_(findAnnotated(table)) {}

  /// Looks into a representation, and forgets what was found before.
  void find(InstanceIndex representation) {
    bodies.clear();
    sets_.clear();
    holdsTessellation = false;
    holdsAnnotation = false;
    table_.forEachItem(representation, attributes::kItems,
                       [this](InstanceIndex item) { visit(item, {}); });
    while (!open_.empty()) {
      const Item set = open_.back();
      open_.pop_back();
      table_.forEachReference(set.instance, [&](const Reference& reference) {
        const InstanceIndex item = table_.find(reference.number);
        if (reference.kind == Reference::Kind::ListItem && item != kNoInstance) {
          visit(item, set.repositioning);
        }
      });
    }
  }

  std::set<Item> bodies;
  bool holdsTessellation = false;
  bool holdsAnnotation = false;
  std::size_t visited = 0;  ///< items, of all representations

 private:
  void visit(InstanceIndex index, const std::vector<InstanceIndex>& repositioning) {
    holdsAnnotation = holdsAnnotation || table_.is(index, Kind::Annotation);
    if (!table_.isTessellated(index) || ++visited > kMaxItems) {
      return;
    }
    holdsTessellation = true;
    if (annotated_[index]) {
      holdsAnnotation = true;
      return;
    }
    Item item{index, repositioning};
    const InstanceIndex location = table_.attribute(index, kLocation);
    if (location != kNoInstance && table_.type(index).isComplex &&
        table_.is(index, Kind::TessellatedSet, Kind::TessellatedBody)) {
      item.repositioning.push_back(location);
    }
    if (table_.is(index, Kind::TessellatedSet)) {
      visitSet(std::move(item));
    } else if (table_.is(index, Kind::TriangulatedFace, Kind::CurvedFace, Kind::TessellatedBody)) {
      bodies.insert(std::move(item));
    }
  }

  /// A set is looked into once for each place where it stands. The limits are for sets that hold
  /// themselves, or are held in more ways than there can be.
  void visitSet(Item set) {
    constexpr std::size_t kMaxDepth = 16;
    constexpr std::size_t kMaxSets = 100'000;
    if (set.repositioning.size() > kMaxDepth) {
      warnings_.insert("sets of tessellation in more than 16 placements of sets are left out");
    } else if (sets_.size() == kMaxSets && !sets_.contains(set)) {
      warnings_.insert("of the sets of tessellation in a shape, those after 100,000 are left out");
    } else if (sets_.insert(set).second) {
      open_.push_back(std::move(set));
    }
  }

  const InstanceTable& table_;
  Warnings& warnings_;
  std::vector<bool> annotated_;
  std::set<Item> sets_;
  std::vector<Item> open_;
};

/// What makes copies: exact geometry that the kernel comes to, or that is tied to a product.
class Originals {
 public:
  Originals(const InstanceTable& table, const ProductStructure& structure)
      : table_(table), structure_(structure), groups_(structure.representations.size()) {
    std::vector<RepresentationIndex> carrying;
    for (RepresentationIndex i = 0; i < structure.representations.size(); ++i) {
      const Representation& representation = structure.representations[i];
      if (representation.isExact && representation.isReached) {
        carrying.push_back(i);
        groups_[representation.group] = true;
      }
    }
    areNone_ = carrying.empty();
    if (!areNone_) {
      carried_ = findCarried(table, structure, carrying);
      markProducts();
    }
  }

  /// Whether the body names its exact twin, or each of its faces one.
  [[nodiscard]] bool areNamedBy(InstanceIndex body) const {
    if (areNone_) {
      return false;
    }
    for (const Attribute& link : {kSolidLink, kShellLink}) {
      if (table_.is(body, Kind::TessellatedBody) &&
          (table_.type(body).isComplex || table_.type(body).keywords[0] == link.record) &&
          isCarried(table_.attribute(body, link))) {
        return true;
      }
    }
    Warnings ignored;
    const std::vector<InstanceIndex> faces = facesOf(table_, body, ignored);
    return !faces.empty() && std::all_of(faces.begin(), faces.end(), [this](InstanceIndex face) {
      return isCarried(readFaceLinks(table_, face).geometry);
    });
  }

  /// Whether some stand where the representation does.
  [[nodiscard]] bool standAt(RepresentationIndex index) const {
    return groups_[structure_.representations[index].group];
  }

 private:
  [[nodiscard]] bool isCarried(InstanceIndex index) const {
    return index != kNoInstance && carried_[index] &&
           table_.is(index, Kind::Solid, Kind::Shell, Kind::Face);
  }

  /// Adds the groups whose products have originals in another group.
  void markProducts() {
    std::vector<bool> isOriginal(structure_.products.size());
    for (const auto& [group, products] : structure_.productsOfGroup) {
      for (const ProductIndex product : products) {
        isOriginal[product] = isOriginal[product] || groups_[group];
      }
    }
    for (const auto& [group, products] : structure_.productsOfGroup) {
      groups_[group] = groups_[group] || std::any_of(products.begin(), products.end(),
                                                     [&](ProductIndex p) { return isOriginal[p]; });
    }
  }

  const InstanceTable& table_;
  const ProductStructure& structure_;
  bool areNone_ = true;
  std::vector<bool> groups_, carried_;
};

/// Sorts the tessellation of representations by what it is for.
class PartFinder {
 public:
  PartFinder(const InstanceTable& table, const ProductStructure& structure,
             Occurrences& occurrences, Warnings& warnings)
      : table_(table),
        structure_(structure),
        occurrences_(occurrences),
        warnings_(warnings),
        originals_(table, structure),
        finder_(table, warnings) {}

  PartTessellation find() {
    for (RepresentationIndex i = 0; i < structure_.representations.size(); ++i) {
      const Representation& representation = structure_.representations[i];
      finder_.find(representation.instance);
      if (table_.is(representation.instance, Kind::TessellatedShape) || finder_.holdsTessellation) {
        ++part_.representationCount;
        sortRepresentation(i);
      }
    }
    spreadToNodes();
    std::erase_if(bodies_, [this](const Body& body) {
      return copied_.contains({body.instance, body.node});
    });
    removeStray();
    part_.hasTooMany =
        finder_.visited > kMaxItems || bodies_.size() > kMaxItems || copied_.size() > kMaxItems;
    part_.bodies.assign(bodies_.begin(), bodies_.end());
    part_.copies.assign(copies_.begin(), copies_.end());
    return std::move(part_);
  }

 private:
  void sortRepresentation(RepresentationIndex index) {
    const Representation& representation = structure_.representations[index];
    const EntityType& type = table_.type(representation.instance);
    if (type.is(Kind::DraughtingModel) || (finder_.bodies.empty() && finder_.holdsAnnotation)) {
      ++part_.annotationCount;
    } else if (representation.isOfProperty && !representation.isOfProduct) {
      ++part_.propertyCount;
    } else if (type.is(Kind::TessellatedShape) ||
               (isPlainShape(type) && representation.isOfProduct)) {
      sortBodies(index);
    } else if (!isPlainShape(type) && !finder_.bodies.empty()) {
      warnings_.insert("tessellation in a " + type.keywords[0] + " is left out");
    }
  }

  static bool isPlainShape(const EntityType& type) {
    return std::find(type.keywords.begin(), type.keywords.end(), "SHAPE_REPRESENTATION") !=
           type.keywords.end();
  }

  /// Sorts the bodies that were found in a shape.
  void sortBodies(RepresentationIndex index) {
    std::set<InstanceIndex> linked;
    for (const Item& item : finder_.bodies) {
      if (originals_.areNamedBy(item.instance)) {
        linked.insert(item.instance);
      }
    }
    const bool areAllCopies = linked.empty() && originals_.standAt(index);
    const RepresentationIndex group = structure_.representations[index].group;
    for (const Item& item : finder_.bodies) {
      if (areAllCopies || linked.contains(item.instance)) {
        copies_.insert(item.instance);
        copiedInGroups_.emplace(item.instance, group);
      } else {
        inGroups_.emplace(std::pair(item, group), index);
      }
    }
  }

  /// Makes bodies of the nodes of what was found in groups: of all their products, or of themselves.
  void spreadToNodes() {
    for (const auto& [instance, group] : copiedInGroups_) {
      for (const Node node : occurrences_.nodesOf(group)) {
        copied_.emplace(instance, node);
      }
      if (copied_.size() > kMaxItems) {
        break;
      }
    }
    for (const auto& [found, representation] : inGroups_) {
      for (const Node node : occurrences_.nodesOf(found.second)) {
        bodies_.insert({found.first.instance, representation, node, found.first.repositioning});
      }
      if (bodies_.size() > kMaxItems) {
        break;
      }
    }
  }

  /// Leaves out bodies of representations that are no product's, where a product has the same body.
  void removeStray() {
    std::set<InstanceIndex> ofProducts;
    for (const Body& body : bodies_) {
      if (occurrences_.isProduct(body.node)) {
        ofProducts.insert(body.instance);
      }
    }
    std::erase_if(bodies_, [&](const Body& body) {
      return !occurrences_.isProduct(body.node) && ofProducts.contains(body.instance) &&
             !occurrences_.isPlaced(body.node);
    });
  }

  const InstanceTable& table_;
  const ProductStructure& structure_;
  Occurrences& occurrences_;
  Warnings& warnings_;
  Originals originals_;
  BodyFinder finder_;
  PartTessellation part_;
  std::map<std::pair<Item, RepresentationIndex>, RepresentationIndex> inGroups_;  // of the group
  std::set<std::pair<InstanceIndex, RepresentationIndex>> copiedInGroups_;
  std::set<Body> bodies_;
  std::set<InstanceIndex> copies_;
  std::set<std::pair<InstanceIndex, Node>> copied_;
};

}  // namespace

FaceLinks readFaceLinks(const InstanceTable& table, InstanceIndex face) {
  FaceLinks links;
  links.coordinates = table.attribute(face, kFaceCoordinates);
  const EntityType& type = table.type(face);
  if (type.isComplex) {
    links.location = table.attribute(face, kLocation);
    links.coordinates = links.coordinates == kNoInstance ? table.attribute(face, kSetCoordinates)
                                                         : links.coordinates;
  }
  if (links.coordinates != kNoInstance && !table.is(links.coordinates, Kind::CoordinatesList)) {
    links.coordinates = kNoInstance;
  }
  links.geometry = table.attribute(face, kFaceLink);
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
    if (table.is(index, Kind::CurvedFace)) {
      warnings.insert("curved triangles (CUBIC_BEZIER_TRIANGULATED_FACE) are left out");
    } else if (table.is(index, Kind::TriangulatedFace)) {
      faces.push_back(index);
    } else if (table.is(index, Kind::TessellatedBody) && shells.insert(index).second) {
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
  PartTessellation part = PartFinder(table, structure, occurrences, warnings).find();
  for (const Representation& representation : structure.representations) {
    part.hasExact = part.hasExact || representation.isExact;
    part.mayHaveExact = part.mayHaveExact || part.hasExact || representation.holdsConstruct;
  }
  for (const EntityType& type : table.types()) {
    for (const std::string& keyword : type.keywords) {
      if (kindOf(keyword) == Kind::UnknownTessellation) {
        warnings.insert("tessellation of an unknown kind is left out: " + keyword);
      }
    }
  }
  return part;
}

}  // namespace plenvorith
