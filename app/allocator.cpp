// The program's operators new, for every library in the process.
//
// Those of mimalloc end the program without a word when there is no memory left; these do what the
// standard says. They take the memory from malloc, so that it comes from the same library as the
// operators delete give it back to, whichever that is: a library that is preloaded comes first.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

/// Asks `allocate` for memory until it gives some; in between the new-handler may free some.
template <typename Allocate>
void* allocateOrThrow(Allocate allocate) {
  while (true) {
    if (void* const memory = allocate()) {
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return allocateOrThrow([size] { return std::malloc(std::max<std::size_t>(size, 1)); });
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

// The memory resources of the standard library call this one, whatever the alignment.
void* operator new(std::size_t size, std::align_val_t alignment) {
  const std::size_t boundary = std::max(static_cast<std::size_t>(alignment), sizeof(void*));
  return allocateOrThrow([size, boundary] {
    void* memory = nullptr;
    const int error = posix_memalign(&memory, boundary, std::max<std::size_t>(size, 1));
    return error == 0 ? memory : nullptr;
  });
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
  return operator new(size, alignment);
}
