#include "common/reserve.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace plenvorith {

void preferLargePages(void* start, std::size_t size) {
#ifdef __linux__
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;  // two large pages
  if (size < kWorthwhile) {
    return;
  }
  static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::size_t skipped = (page - address % page) % page;
  // A system without large pages says so; nothing depends on it.
  (void)madvise(static_cast<char*>(start) + skipped, (size - skipped) / page * page, MADV_HUGEPAGE);
#else
  (void)start;
  (void)size;
#endif
}

}  // namespace plenvorith
