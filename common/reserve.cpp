#include "common/reserve.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace plenvorith {

void preferLargePages(const void* start, std::size_t size) {
#ifdef __linux__
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;  // two large pages
  if (size < kWorthwhile) {
    return;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::uintptr_t first = (address + kPage - 1) / kPage * kPage;
  const std::uintptr_t last = (address + size) / kPage * kPage;
  // A system without large pages says so; nothing depends on it.
  (void)madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
  (void)start;
  (void)size;
#endif
}

}  // namespace plenvorith
