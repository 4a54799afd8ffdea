// The program's operators new, for every library in the process.
//
// Those of mimalloc end the program without a word when there is no memory left; these do what the
// standard says. They take the memory from malloc, so that it comes from the same library as the
// operators delete give it back to, whichever that is: a library that is preloaded comes first.

#include <cstddef>
#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
  while (true) {
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

void* operator new[](std::size_t size) {
  return operator new(size);
}
