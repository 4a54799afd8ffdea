#pragma once

#include <cstddef>
#include <memory_resource>
#include <vector>

namespace plenvorith {

/// Asks the system to back the `size` bytes at `start`, whose content is not needed yet, with large
/// pages, where it has them at hand and the range is worth it.
///
/// Changes nothing but speed: touching a page for the first time is what costs most in filling
/// memory, and a large page is touched once where 512 small ones would be. This is for the few
/// blocks of megabytes that are filled from one end to the other.
void preferLargePages(void* start, std::size_t size);

/// Reserves room for `count` items, in large pages if it is much.
template <typename Item>
void reserveLarge(std::vector<Item>& items, std::size_t count) {
  items.reserve(count);
  preferLargePages(items.data(), items.capacity() * sizeof(Item));
}

/// Memory from operator new, its large blocks in large pages: what resources that hand out many
/// small pieces can take theirs from.
std::pmr::memory_resource* largePagesResource();

}  // namespace plenvorith
