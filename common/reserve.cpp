#include "common/reserve.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace plenvorith {

void preferLargePages(void* start, std::size_t size) {
#ifdef __linux__
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;  // two large pages
  if (size < kWorthwhile) {
    return;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::size_t skipped = (kPage - address % kPage) % kPage;
  // A system without large pages says so; nothing depends on it.
  (void)madvise(static_cast<char*>(start) + skipped, (size - skipped) / kPage * kPage,
                MADV_HUGEPAGE);
#else
  (void)start;
  (void)size;
#endif
}

}  // namespace plenvorith
