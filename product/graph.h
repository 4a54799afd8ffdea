#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace plenvorith {

/// A node of a graph, by its number.
using Node = std::uint32_t;

/// Sets of nodes that grow together; each is named by its first node. Uniting and finding take next
/// to no time, however many there are.
class Groups {
 public:
  explicit Groups(std::size_t size) : parents_(size) {
    std::iota(parents_.begin(), parents_.end(), 0);
  }
  [[nodiscard]] Node find(Node node);
  void unite(Node a, Node b);

 private:
  std::vector<Node> parents_;
};

/// Edges between nodes.
class Edges {
 public:
  Edges(std::size_t size, const std::vector<std::pair<Node, Node>>& fromTo);

  /// Where the edges from a node lead, in the order in which they were given.
  [[nodiscard]] std::span<const Node> from(Node node) const {
    return {ends_.data() + begins_[node], begins_[node + 1] - begins_[node]};
  }
  /// The places of these edges, in the order in which they were given.
  [[nodiscard]] std::span<const std::uint32_t> placesFrom(Node node) const {
    return {places_.data() + begins_[node], begins_[node + 1] - begins_[node]};
  }

 private:
  std::vector<std::size_t> begins_;
  std::vector<Node> ends_;
  std::vector<std::uint32_t> places_;
};

/// Whether each node is one of `start` or can be reached from there: `forEachNext(node, visit)` calls
/// `visit` with where one step leads. Looks at each node once.
template <typename ForEachNext>
[[nodiscard]] std::vector<bool> reach(std::size_t size, const std::vector<Node>& start,
                                      ForEachNext forEachNext) {
  std::vector<bool> reached(size);
  std::vector<Node> open;
  const auto visit = [&reached, &open](Node node) {
    if (!reached[node]) {
      reached[node] = true;
      open.push_back(node);
    }
  };
  for (const Node node : start) {
    visit(node);
  }
  while (!open.empty()) {
    const Node node = open.back();
    open.pop_back();
    forEachNext(node, visit);
  }
  return reached;
}

[[nodiscard]] inline std::vector<bool> reach(std::size_t size, const std::vector<Node>& start,
                                             const Edges& edges) {
  return reach(size, start, [&edges](Node node, auto visit) {
    for (const Node next : edges.from(node)) {
      visit(next);
    }
  });
}

/// Goes down from the nodes to which no edge leads, then, for those that are in cycles only, from
/// `first`, and from the others in their order.
struct Descent {
  std::vector<Node> order;        ///< of all nodes: each before those to which its edges lead
  std::vector<bool> closesCycle;  ///< of each edge as given; without these there is no cycle
};
[[nodiscard]] Descent descend(std::size_t size, const std::vector<std::pair<Node, Node>>& fromTo,
                              const std::vector<Node>& first = {});

}  // namespace plenvorith
