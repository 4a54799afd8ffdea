#include "product/graph.h"

#include <algorithm>

namespace plenvorith {

Node Groups::find(Node node) {
  Node first = node;
  while (parents_[first] != first) {
    first = parents_[first];
  }
  while (parents_[node] != first) {
    node = std::exchange(parents_[node], first);
  }
  return first;
}

void Groups::unite(Node a, Node b) {
  const Node first = find(a);
  const Node second = find(b);
  parents_[std::max(first, second)] = std::min(first, second);
}

Edges::Edges(std::size_t size, const std::vector<std::pair<Node, Node>>& fromTo)
    : begins_(size + 1), ends_(fromTo.size()), places_(fromTo.size()) {
  for (const auto& edge : fromTo) {
    ++begins_[edge.first];
  }
  std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
  // Filled from behind, so that the ends become the beginnings.
  for (std::size_t i = fromTo.size(); i > 0; --i) {
    const std::size_t place = --begins_[fromTo[i - 1].first];
    ends_[place] = fromTo[i - 1].second;
    places_[place] = static_cast<std::uint32_t>(i - 1);
  }
}

Descent descend(std::size_t size, const std::vector<std::pair<Node, Node>>& fromTo,
                const std::vector<Node>& first) {
  enum class State : std::uint8_t { New, Open, Done };
  const Edges edges(size, fromTo);
  Descent descent;
  descent.closesCycle.resize(fromTo.size());
  std::vector<State> states(size, State::New);
  std::vector<std::pair<Node, std::size_t>> path;  // with the edge to follow next
  const auto descendFrom = [&](Node start) {
    if (states[start] != State::New) {
      return;
    }
    path.emplace_back(start, 0);
    states[start] = State::Open;
    while (!path.empty()) {
      auto& [node, next] = path.back();
      const auto ends = edges.from(node);
      if (next == ends.size()) {
        states[node] = State::Done;
        descent.order.push_back(node);
        path.pop_back();
        continue;
      }
      const std::size_t edge = next++;
      const Node end = ends[edge];
      if (states[end] == State::Open) {
        descent.closesCycle[edges.placesFrom(node)[edge]] = true;
      } else if (states[end] == State::New) {
        states[end] = State::Open;
        path.emplace_back(end, 0);
      }
    }
  };
  std::vector<bool> isEnd(size);
  for (const auto& edge : fromTo) {
    isEnd[edge.second] = true;
  }
  for (Node node = 0; node < size; ++node) {
    if (!isEnd[node]) {
      descendFrom(node);
    }
  }
  std::for_each(first.begin(), first.end(), descendFrom);
  for (Node node = 0; node < size; ++node) {
    descendFrom(node);
  }
  std::reverse(descent.order.begin(), descent.order.end());
  return descent;
}

}  // namespace plenvorith
