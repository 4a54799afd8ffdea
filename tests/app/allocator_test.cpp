#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

int handlerCalls = 0;

/// Finds no memory the first time and none the second time, when it gives up.
void countCalls() {
  ++handlerCalls;
  if (handlerCalls == 2) {
    std::set_new_handler(nullptr);
  }
}

/// More than any system has. Not known to the compiler, which might tell the outcome.
std::size_t tooMuch() {
  static volatile std::size_t size = std::numeric_limits<std::size_t>::max() / 4;
  return size;
}

TEST(OperatorNew, CallsTheHandlerUntilThereIsNoneAndThrows) {
#ifdef PLENVORITH_SANITIZED
  GTEST_SKIP() << "sanitizers bring operators of their own";
#endif
  handlerCalls = 0;
  std::set_new_handler(countCalls);
  EXPECT_THROW(operator delete(operator new(tooMuch())), std::bad_alloc);
  EXPECT_EQ(handlerCalls, 2);
  EXPECT_THROW(operator delete[](operator new[](tooMuch())), std::bad_alloc);
  EXPECT_EQ(handlerCalls, 2);
}

TEST(OperatorNew, ThrowsForAlignedMemoryToo) {
#ifdef PLENVORITH_SANITIZED
  GTEST_SKIP() << "sanitizers bring operators of their own";
#endif
  constexpr std::align_val_t kAlignment{64};
  handlerCalls = 0;
  std::set_new_handler(countCalls);
  EXPECT_THROW(operator delete(operator new(tooMuch(), kAlignment), kAlignment), std::bad_alloc);
  EXPECT_EQ(handlerCalls, 2);
  EXPECT_THROW(operator delete[](operator new[](tooMuch(), kAlignment), kAlignment),
               std::bad_alloc);
}

TEST(OperatorNew, KeepsToTheAlignment) {
  for (const std::size_t boundary : {1U, 8U, 64U, 4096U}) {
    const auto alignment = static_cast<std::align_val_t>(boundary);
    void* const memory = operator new(100, alignment);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % boundary, 0U);
    operator delete(memory, alignment);
  }
}

TEST(OperatorNew, GivesAPlaceOfItsOwnForNothing) {
  void* const first = operator new(0);
  void* const second = operator new(0);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(first, second);
  operator delete(first);
  operator delete(second);
}

}  // namespace
}  // namespace plenvorith
