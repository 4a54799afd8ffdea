#include "common/reserve.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace plenvorith {
namespace {

/// What the standard library asks for: a class.
class LargePages : public std::pmr::memory_resource {
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    void* const memory = std::pmr::new_delete_resource()->allocate(size, alignment);
    preferLargePages(memory, size);
    return memory;
  }

  void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override {
    std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
  }

  [[nodiscard]] bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
    return this == &other;
  }
};

}  // namespace

std::pmr::memory_resource* largePagesResource() {
  static LargePages resource;
  return &resource;
}

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
