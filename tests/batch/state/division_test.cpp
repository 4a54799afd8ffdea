#include "batch/state/division.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;
using testing::Lt;

std::vector<std::uint64_t> randomSizes(std::size_t count) {
  std::mt19937 random(1);
  std::vector<std::uint64_t> sizes;
  for (std::size_t i = 0; i < count; ++i) {
    sizes.push_back(std::uint64_t{1} << (random() % 24));
  }
  return sizes;
}

TEST(DivideEvenly, GivesTheNextLargestFileToThePartWithTheLeast) {
  EXPECT_THAT(divideEvenly({1000000, 5000000, 3000000, 2000000, 900000}, 2),
              ElementsAre(0, 0, 1, 1, 1));
}

TEST(DivideEvenly, DealsOutEqualFilesInTheirOrder) {
  EXPECT_THAT(divideEvenly({7, 7, 7, 7, 7}, 3), ElementsAre(0, 1, 2, 0, 1));
  EXPECT_THAT(divideEvenly({0, 0, 0, 0}, 2), ElementsAre(0, 1, 0, 1));
}

TEST(DivideEvenly, LeavesPartsEmptyWhereThereAreMoreThanFiles) {
  EXPECT_THAT(divideEvenly({7}, 3), ElementsAre(0));
  EXPECT_THAT(divideEvenly({}, 3), IsEmpty());
}

TEST(DivideEvenly, MakesPartsThatDifferByNoMoreThanTheLargestFile) {
  const std::vector<std::uint64_t> sizes = randomSizes(5000);
  const std::vector<std::size_t> partOf = divideEvenly(sizes, 7);
  std::vector<std::uint64_t> loads(7);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    ASSERT_THAT(partOf[i], Lt(7U));
    loads[partOf[i]] += sizes[i];
  }
  const auto [least, most] = std::minmax_element(loads.begin(), loads.end());
  EXPECT_THAT(*most - *least, Le(std::uint64_t{1} << 23));
}

TEST(DivideIntoChunks, HoldsEveryFileOnceTheLargestFirst) {
  const std::vector<std::uint64_t> sizes = randomSizes(5000);
  std::vector<std::size_t> all;
  for (const std::vector<std::size_t>& chunk : divideIntoChunks(sizes, 4)) {
    ASSERT_FALSE(chunk.empty());
    all.insert(all.end(), chunk.begin(), chunk.end());
  }
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end(), [&](std::size_t a, std::size_t b) {
    return sizes[a] > sizes[b] || (sizes[a] == sizes[b] && a < b);
  }));
  std::sort(all.begin(), all.end());
  ASSERT_EQ(all.size(), sizes.size());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

TEST(DivideIntoChunks, PutsSmallFilesTogether) {
  EXPECT_THAT(divideIntoChunks({9, 9, 9}, 8), ElementsAre(ElementsAre(0, 1, 2)));
  EXPECT_THAT(divideIntoChunks(std::vector<std::uint64_t>(1000, 100), 2).size(), Lt(40U));
}

TEST(DivideIntoChunks, GivesEveryWorkerSomethingToDo) {
  EXPECT_THAT(divideIntoChunks({5000000, 5000000, 5000000, 5000000}, 4),
              ElementsAre(ElementsAre(0), ElementsAre(1), ElementsAre(2), ElementsAre(3)));
  EXPECT_THAT(divideIntoChunks(std::vector<std::uint64_t>(1000, 100), 10).size(), testing::Ge(10U));
  EXPECT_THAT(divideIntoChunks({}, 4), IsEmpty());
}

}  // namespace
}  // namespace plenvorith
