#include "check/places.h"

#include <algorithm>
#include <bit>

namespace plenvorith {
namespace {

/// Slots for this many places. At most half of them are taken, or each place would stand in the way
/// of many others.
std::size_t slotsFor(std::size_t places) {
  constexpr std::size_t kFewest = 16;
  return std::bit_ceil(std::max(kFewest, 2 * places));
}

/// The same place with the same bits.
Place normalized(const Place& place) {
  // Minus zero and zero are zero.
  return {place[0] + 0.0F, place[1] + 0.0F, place[2] + 0.0F};
}

}  // namespace

std::uint64_t hashOf(const Place& place) {
  const auto [x, y, z] = normalized(place);
  // Multipliers and shifts that mix well: neighbours on a grid differ in few bits.
  std::uint64_t hash =
      std::bit_cast<std::uint32_t>(x) | std::uint64_t{std::bit_cast<std::uint32_t>(y)} << 32U;
  hash ^= hash >> 32U;
  hash *= 0x9E3779B97F4A7C15U;
  hash ^= std::bit_cast<std::uint32_t>(z);
  hash ^= hash >> 29U;
  hash *= 0xBF58476D1CE4E5B9U;
  hash ^= hash >> 32U;
  hash *= 0x94D049BB133111EBU;
  return hash ^ hash >> 31U;
}

PlaceNumbers::PlaceNumbers(std::size_t expected, std::size_t most)
    : slots_(slotsFor(expected)), mask_(slots_.size() - 1) {
  places_.reserve(most);
}

std::uint32_t PlaceNumbers::numberOf(const Place& place, std::uint64_t hash) {
  std::size_t slot = hash & mask_;
  while (slots_[slot] != 0) {
    // Equal numbers are equal places: there is no NaN, and the two zeros are one.
    if (places_[slots_[slot] - 1] == place) {
      return slots_[slot] - 1;
    }
    slot = (slot + 1) & mask_;
  }
  places_.push_back(place);
  slots_[slot] = count();
  if (slots_.size() / 2 < places_.size()) {
    grow();
  }
  return count() - 1;
}

void PlaceNumbers::grow() {
  const std::size_t size = 2 * slots_.size();
  // The old slots go first: their content follows from the places. Only another vector takes their
  // memory with it.
  slots_ = std::vector<std::uint32_t>();
  slots_.resize(size);
  mask_ = size - 1;
  for (std::uint32_t number = 0; number < count(); ++number) {
    if (count() - number > kAhead) {
      expect(hashOf(places_[number + kAhead]));
    }
    std::size_t slot = hashOf(places_[number]) & mask_;
    while (slots_[slot] != 0) {
      slot = (slot + 1) & mask_;
    }
    slots_[slot] = number + 1;
  }
}

}  // namespace plenvorith
