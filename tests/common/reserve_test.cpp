#include "common/reserve.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory_resource>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace plenvorith {
namespace {

/// Anonymous memory of a mapping of its own, gone at the end of the scope.
class Mapping {
 public:
  explicit Mapping(std::size_t size)
      : size_(size),
        start_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  ~Mapping() {
    munmap(start_, size_);
  }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  char* at(std::size_t offset) const {
    return static_cast<char*>(start_) + offset;
  }

 private:
  std::size_t size_;
  void* start_;
};

/// Whether the system was advised to back the memory at `place` with large pages.
bool isAdvised(const char* place) {
  const auto address = reinterpret_cast<std::uintptr_t>(place);
  std::ifstream file("/proc/self/smaps");
  std::string line;
  bool isHere = false;
  while (std::getline(file, line)) {
    std::istringstream words(line);
    std::uintptr_t start = 0;
    std::uintptr_t end = 0;
    char dash = ' ';
    if (words >> std::hex >> start >> dash >> end && dash == '-') {
      isHere = start <= address && address < end;
    } else if (isHere && line.starts_with("VmFlags:")) {
      return line.find(" hg") != std::string::npos;
    }
  }
  return false;
}

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;

/// Whether the system has large pages at all and tells about them.
bool hasLargePages() {
  const Mapping mapping(8 * kMebibyte);
  return madvise(mapping.at(0), 8 * kMebibyte, MADV_HUGEPAGE) == 0 && isAdvised(mapping.at(0));
}

TEST(PreferLargePages, AdvisesWholePagesOfALargeBlock) {
  if (!hasLargePages()) {
    GTEST_SKIP() << "the system has no large pages";
  }
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const Mapping mapping(16 * kMebibyte);
  // From the middle of the second page to the middle of a later one.
  preferLargePages(mapping.at(page + 100), 8 * kMebibyte);
  EXPECT_FALSE(isAdvised(mapping.at(page)));
  EXPECT_TRUE(isAdvised(mapping.at(2 * page)));
  EXPECT_TRUE(isAdvised(mapping.at(8 * kMebibyte)));
  EXPECT_FALSE(isAdvised(mapping.at(8 * kMebibyte + page)));
}

TEST(PreferLargePages, LeavesASmallBlockAlone) {
  const Mapping mapping(16 * kMebibyte);
  preferLargePages(mapping.at(0), 2 * kMebibyte);
  EXPECT_FALSE(isAdvised(mapping.at(0)));
}

TEST(PreferLargePages, AcceptsWhatIsNoMemory) {
  preferLargePages(nullptr, 0);
  preferLargePages(nullptr, 64 * kMebibyte);
}

TEST(ReserveLarge, MakesRoomAndKeepsTheItems) {
  std::vector<int> items = {1, 2, 3};
  reserveLarge(items, 10'000'000);
  EXPECT_GE(items.capacity(), 10'000'000U);
  EXPECT_EQ(items, (std::vector<int>{1, 2, 3}));
}

TEST(ReserveLarge, AsksForLargePages) {
  if (!hasLargePages()) {
    GTEST_SKIP() << "the system has no large pages";
  }
  std::vector<char> items;
  reserveLarge(items, 16 * kMebibyte);
  EXPECT_TRUE(isAdvised(items.data() + 8 * kMebibyte));
}

TEST(LargePagesResource, AdvisesLargeBlocksOnly) {
  if (!hasLargePages()) {
    GTEST_SKIP() << "the system has no large pages";
  }
  std::pmr::memory_resource* const resource = largePagesResource();
  EXPECT_EQ(resource, largePagesResource());
  void* const small = resource->allocate(1000, 8);
  void* const large = resource->allocate(16 * kMebibyte, 64);
  EXPECT_TRUE(isAdvised(static_cast<char*>(large) + 8 * kMebibyte));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large) % 64, 0U);
  resource->deallocate(small, 1000, 8);
  resource->deallocate(large, 16 * kMebibyte, 64);
}

}  // namespace
}  // namespace plenvorith
