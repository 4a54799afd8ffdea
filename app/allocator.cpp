#include "app/allocator.h"

#ifdef PLENVORITH_MIMALLOC
#include <cstddef>
#include <new>

#include <mimalloc.h>

// The library's own operators end the program without a word when there is no memory left. These do
// what is usual, for every library in the process.
void* operator new(std::size_t size) {
  if (void* const memory = mi_malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
  return operator new(size);
}
#endif

namespace plenvorith {

void allocateLargePages([[maybe_unused]] bool prefer) {
#ifdef PLENVORITH_MIMALLOC
  mi_option_set_enabled(mi_option_large_os_pages, prefer);
#endif
}

}  // namespace plenvorith
