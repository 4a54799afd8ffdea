#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "product/graph.h"
#include "product/placement.h"
#include "product/product_structure.h"

namespace plenvorith {

/// Finds where products and representations stand in the whole, in millimetres, up the usages of
/// products, mapped items and transformations. A node is a product, or a group of representations
/// that is no product's.
class Occurrences {
 public:
  /// More placements than this are in no real file.
  static constexpr std::size_t kMaxCount = std::size_t{1} << 22U;

  /// All must outlive this; warnings are added as they come up.
  Occurrences(const ProductStructure& structure, InstanceReader& reader, Warnings& warnings);

  /// The nodes that a representation shows: its products, or else its group.
  [[nodiscard]] std::vector<Node> nodesOf(RepresentationIndex representation) const;

  [[nodiscard]] bool isProduct(Node node) const {
    return node < structure_.products.size();
  }

  /// Whether anything places the node, so that it does not just stand where it is.
  [[nodiscard]] bool isPlaced(Node node) const;

  /// How often a node stands in the whole, more than `kMaxCount` if that is too often.
  [[nodiscard]] std::size_t countOf(Node node) const {
    return counts_[node];
  }

  /// Finds the placements of these nodes and of all above them. False, before memory is spent on
  /// them, if there are too many.
  [[nodiscard]] bool place(const std::vector<Node>& nodes);

  /// Where a node that was placed stands: once for each occurrence.
  [[nodiscard]] const std::vector<Placement>& placementsOf(Node node) const {
    return placements_[node];
  }

  /// The millimetres in one unit of length of a representation's context.
  [[nodiscard]] double unitOf(RepresentationIndex representation);

  /// The placement an item means in the context of a representation; the identity, with a warning,
  /// if it means none.
  [[nodiscard]] Placement placementOf(InstanceIndex item, RepresentationIndex representation);

 private:
  /// What puts a node into one above it.
  struct Step {
    enum class Kind : std::uint8_t { Usage, UnplacedUsage, Mapping, Transformation };
    Kind kind = Kind::Usage;
    bool closesCycle = false;
    Node above = 0;
    std::uint32_t index = 0;  // of the usage, mapping or transformation
  };

  void addSteps(Node node, const Edges& usages, const Edges& mappings,
                const Edges& transformations);
  void addUsages(ProductIndex product, const Edges& usages, const Edges& mappings);
  void addMappings(Node node, const Edges& mappings);
  void findCycles();
  void countAll();
  [[nodiscard]] std::vector<std::pair<Node, Node>> stepsDown() const;
  [[nodiscard]] std::vector<bool> withAllAbove(const std::vector<Node>& nodes) const;
  void placeNode(Node node);
  Placement placementOf(const Step& step);
  Placement placementOfMapping(const Mapping& mapping);
  Placement placementOfRelationship(InstanceIndex relationship, bool isPartSecond);

  const ProductStructure& structure_;
  InstanceReader& reader_;
  Warnings& warnings_;
  std::vector<Step> steps_;          // those of one node together
  std::vector<std::size_t> begins_;  // of each node's steps
  std::vector<Node> order_;          // each node behind those above it
  std::vector<std::size_t> counts_;
  bool hasTooMany_ = false;
  bool hasMappingCycle_ = false;
  std::vector<std::vector<Placement>> placements_;
  std::map<InstanceIndex, double> units_;
};

}  // namespace plenvorith
