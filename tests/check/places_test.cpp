#include "check/places.h"

#include <bit>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

std::uint32_t numberOf(PlaceNumbers& numbers, const Place& place) {
  return numbers.numberOf(place, hashOf(place));
}

TEST(Places, AreNumberedAsTheyCome) {
  PlaceNumbers numbers(0, 8);
  EXPECT_EQ(numberOf(numbers, {1, 2, 3}), 0U);
  EXPECT_EQ(numberOf(numbers, {3, 2, 1}), 1U);
  EXPECT_EQ(numberOf(numbers, {1, 2, 3}), 0U);
  EXPECT_EQ(numbers.count(), 2U);
}

TEST(Places, AreApartWhereOneBitDiffers) {
  PlaceNumbers numbers(0, 100);
  const Place place = {1.5F, -2.25F, 1e-30F};
  EXPECT_EQ(numberOf(numbers, place), 0U);
  std::uint32_t expected = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (unsigned bit = 0; bit < 32; ++bit) {
      Place other = place;
      other[axis] = std::bit_cast<float>(std::bit_cast<std::uint32_t>(place[axis]) ^ 1U << bit);
      EXPECT_EQ(numberOf(numbers, other), ++expected) << axis << ' ' << bit;
    }
  }
}

TEST(Places, TakeTheTwoZerosForOne) {
  PlaceNumbers numbers(0, 8);
  EXPECT_EQ(numberOf(numbers, {0.0F, 1, -0.0F}), 0U);
  EXPECT_EQ(numberOf(numbers, {-0.0F, 1, 0.0F}), 0U);
}

TEST(Places, KeepTheirNumbersAsTheTableGrows) {
  PlaceNumbers numbers(0, 100'000);
  std::map<Place, std::uint32_t> known;
  std::mt19937 random(7);
  for (int i = 0; i < 100'000; ++i) {
    const auto coordinate = [&random] { return static_cast<float>(random() % 40) / 8; };
    const Place place = {coordinate(), coordinate(), coordinate()};
    const auto entry = known.try_emplace(place, static_cast<std::uint32_t>(known.size())).first;
    ASSERT_EQ(numberOf(numbers, place), entry->second);
  }
  EXPECT_EQ(numbers.count(), known.size());
}

TEST(Places, HaveHashesInBothHalves) {
  // Files are numbered in two halves: memory is saved only if these are about equal.
  int upper = 0;
  for (int x = 0; x < 100; ++x) {
    for (int y = 0; y < 100; ++y) {
      upper += static_cast<int>(hashOf({static_cast<float>(x), static_cast<float>(y), 0}) >> 63U);
    }
  }
  EXPECT_GT(upper, 4500);
  EXPECT_LT(upper, 5500);
}

}  // namespace
}  // namespace plenvorith
