#include "batch/state/division.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>

namespace plenvorith {
namespace {

/// What the smallest file costs, in bytes of a large one.
constexpr std::uint64_t kCostOfAFile = 16384;

/// The numbers of the files, the largest first, and of equal ones the first first.
std::vector<std::size_t> largestFirst(const std::vector<std::uint64_t>& sizes) {
  std::vector<std::size_t> order(sizes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return sizes[a] > sizes[b]; });
  return order;
}

}  // namespace

std::vector<std::size_t> divideEvenly(const std::vector<std::uint64_t>& sizes, std::size_t parts) {
  // The next largest file goes to the part that has the least so far, the first of equal ones.
  using Load = std::pair<std::uint64_t, std::size_t>;
  std::priority_queue<Load, std::vector<Load>, std::greater<>> loads;
  for (std::size_t part = 0; part < parts; ++part) {
    loads.emplace(0, part);
  }
  std::vector<std::size_t> partOf(sizes.size());
  for (const std::size_t file : largestFirst(sizes)) {
    const auto [load, part] = loads.top();
    loads.pop();
    partOf[file] = part;
    loads.emplace(load + sizes[file] + kCostOfAFile, part);
  }
  return partOf;
}

std::vector<std::vector<std::size_t>> divideIntoChunks(const std::vector<std::uint64_t>& sizes,
                                                       std::size_t workers) {
  constexpr std::uint64_t kSmallestChunk = 32 * kCostOfAFile;  // starting a worker costs as well
  std::uint64_t left = 0;
  for (const std::uint64_t size : sizes) {
    left += size + kCostOfAFile;
  }
  std::vector<std::vector<std::size_t>> chunks;
  std::uint64_t room = 0;
  for (const std::size_t file : largestFirst(sizes)) {
    const std::uint64_t cost = sizes[file] + kCostOfAFile;
    if (chunks.empty() || cost > room) {
      chunks.emplace_back();
      room = std::max({left / (3 * workers), kSmallestChunk, cost});
    }
    chunks.back().push_back(file);
    room -= cost;
    left -= cost;
  }
  return chunks;
}

}  // namespace plenvorith
