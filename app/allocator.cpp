#include "app/allocator.h"

#ifdef PLENVORITH_MIMALLOC
#include <mimalloc.h>
#endif

namespace plenvorith {

void allocateLargePages([[maybe_unused]] bool prefer) {
#ifdef PLENVORITH_MIMALLOC
  mi_option_set_enabled(mi_option_large_os_pages, prefer);
#endif
}

}  // namespace plenvorith
