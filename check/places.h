#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace plenvorith {

/// A vertex as an STL file holds it.
using Place = std::array<float, 3>;

/// The numbers of a triangle's three places.
using Corners = std::array<std::uint32_t, 3>;

/// Places may be numbered up to here, so that a number and a direction fit into 32 bits.
inline constexpr std::uint32_t kMaxPlaces = std::uint32_t{1} << 31U;

/// A hash of a place, all of its bits as good as any. The two zeros are one place.
std::uint64_t hashOf(const Place& place);

/// Numbers places, from 0 on in the order in which they are first asked for.
///
/// Two vertices are one place when their bits are the same (the two zeros are the same, too): no
/// tolerance joins what a file holds apart.
///
/// Cost  12 bytes a place and 8 to 16 more. A search goes to one place in memory, which takes longer
///       than all else if that was not asked for early (`expect`).
class PlaceNumbers {
 public:
  /// How many searches ahead it is worth to ask.
  static constexpr std::uint32_t kAhead = 16;

  /// Takes  how many places there will be about, and at most: more than `expected` cost time; room
  ///        for `most` is set aside, which costs memory only as it is used.
  PlaceNumbers(std::size_t expected, std::size_t most);

  /// The number of a place with this hash.
  std::uint32_t numberOf(const Place& place, std::uint64_t hash);

  /// Asks for the memory where the search for a place with this hash begins.
  void expect(std::uint64_t hash) const {
    __builtin_prefetch(&slots_[hash & mask_]);
  }

  [[nodiscard]] std::uint32_t count() const {
    return static_cast<std::uint32_t>(places_.size());
  }

 private:
  void grow();

  std::vector<Place> places_;
  std::vector<std::uint32_t> slots_;  // a place's number and 1; 0: free
  std::size_t mask_ = 0;
};

}  // namespace plenvorith
