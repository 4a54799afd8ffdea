#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "product/placement.h"
#include "product/product_structure.h"

namespace plenvorith {

/// What has places in the whole: a product, or a group of representations that is no product's.
using Node = std::uint32_t;

/// Finds where products and representations stand in the whole, in millimetres, up the usages of
/// products, mapped items and transformations; each is looked for once.
class Occurrences {
 public:
  /// More placements than this are in no real file.
  static constexpr std::size_t kMaxCount = std::size_t{1} << 22U;

  /// All must outlive this; warnings are added as they come up.
  Occurrences(const ProductStructure& structure, InstanceReader& reader, Warnings& warnings);

  /// The nodes that a representation shows: its products, or else its group.
  [[nodiscard]] std::vector<Node> nodesOf(RepresentationIndex representation) const;

  /// Where a node stands: once for each occurrence. Nothing if there are too many.
  [[nodiscard]] const std::vector<Placement>& placementsOf(Node node);

  /// Whether anything places the node, so that it does not just stand where it is.
  [[nodiscard]] bool isPlaced(Node node);

  [[nodiscard]] bool isProduct(Node node) const {
    return node < structure_.products.size();
  }

  /// The millimetres in one unit of length of a representation's context.
  [[nodiscard]] double unitOf(RepresentationIndex representation);

  /// The placement an item means in the context of a representation; the identity, with a warning,
  /// if it means none.
  [[nodiscard]] Placement placementOf(InstanceIndex item, RepresentationIndex representation);

 private:
  struct Edge {
    Node above = 0;
    Placement placement;
  };
  struct Found {
    std::vector<Edge> edges;
    std::vector<Placement> placements;
    std::size_t next = 0;  // the edge to follow next
    bool isDone = false;
  };

  std::vector<Edge> edgesOf(Node node);
  void addUsages(ProductIndex product, std::vector<Edge>& edges);
  void addMappings(Node node, const ProductIndex* inProduct, std::vector<Edge>& edges);
  void addTransformations(Node node, std::vector<Edge>& edges);
  bool isInNode(RepresentationIndex representation, Node node) const;
  Placement placementOf(InstanceIndex relationship, bool isPartSecond);
  void finish(Found& found);

  const ProductStructure& structure_;
  InstanceReader& reader_;
  Warnings& warnings_;
  std::multimap<ProductIndex, std::size_t> usagesOfPart_;
  std::multimap<Node, std::size_t> mappingsOfNode_;
  std::multimap<Node, std::size_t> transformationsOfNode_;
  std::map<InstanceIndex, double> units_;
  std::map<Node, Found> found_;
  std::size_t count_ = 0;
};

}  // namespace plenvorith
