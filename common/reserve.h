#pragma once

#include <cstddef>
#include <vector>

namespace plenvorith {

/// Asks the system to back the `size` bytes at `start` with large pages, where it has them and the
/// range is worth it. Changes nothing but speed: touching a new page is what costs most in filling
/// memory, and a large page is touched once where 512 small ones would be.
void preferLargePages(void* start, std::size_t size);

/// Reserves room for `count` items, in large pages if it is much.
template <typename Item>
void reserveLarge(std::vector<Item>& items, std::size_t count) {
  items.reserve(count);
  preferLargePages(items.data(), items.capacity() * sizeof(Item));
}

}  // namespace plenvorith
