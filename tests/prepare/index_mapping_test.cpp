#include "prepare/index_mapping.h"

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;

/// A mapping in a file, behind which "Z" stands.
struct Mapped : test::Instances {
  Mapped(const std::string& list, std::uint64_t points, const MappingLimits& limits)
      : Instances("#1=A(" + list + "Z);\n"), mapping(points, limits) {
    reader.seekBody(table.offset(0));
    tokens.emplace(reader);
    (void)tokens->takeKeyword();
    (void)tokens->take('(');
    isRead = mapping.read(*tokens);
  }
  std::vector<std::uint32_t> lookedUp(std::vector<std::uint32_t> indices) {
    mapping.lookUp(*tokens, indices);
    EXPECT_EQ(tokens->peek(), 'Z');
    return indices;
  }

  IndexMapping mapping;
  std::optional<TokenReader> tokens;
  bool isRead = false;
};

TEST(IndexMapping, HoldsItsEntries) {
  const Mapped in("(30,10,20)", 100, {});
  EXPECT_TRUE(in.isRead);
  EXPECT_TRUE(in.mapping.isHeld());
  EXPECT_FALSE(in.mapping.isEmpty());
  EXPECT_EQ(in.mapping.held(1), 30U);
  EXPECT_EQ(in.mapping.held(3), 20U);
}

TEST(IndexMapping, HasIndicesFromOneOn) {
  for (const std::size_t limit : {1U, 9U}) {
    const Mapped in("(30,10,20)", 100, {.held = limit});
    EXPECT_FALSE(in.mapping.has(0));
    EXPECT_FALSE(in.mapping.has(-1));
    EXPECT_TRUE(in.mapping.has(1));
    EXPECT_TRUE(in.mapping.has(3));
    EXPECT_FALSE(in.mapping.has(4));
  }
}

TEST(IndexMapping, MayBeEmptyOrMissing) {
  for (const char* text : {"()", "$"}) {
    const Mapped in(text, 100, {.held = 0});
    EXPECT_TRUE(in.isRead) << text;
    EXPECT_TRUE(in.mapping.isEmpty()) << text;
    EXPECT_TRUE(in.mapping.isHeld()) << text;
  }
}

TEST(IndexMapping, IsHeldUpToItsLimit) {
  EXPECT_TRUE(Mapped("(3,1,2,5)", 9, {.held = 4}).mapping.isHeld());
  EXPECT_FALSE(Mapped("(3,1,2,5,4)", 9, {.held = 4}).mapping.isHeld());
}

TEST(IndexMapping, EntriesOutsideTheListOfPointsAreZero) {
  const Mapped in("(0,9,10,-1,4294967296)", 9, {});
  EXPECT_EQ(in.mapping.held(1), 0U);
  EXPECT_EQ(in.mapping.held(2), 9U);
  EXPECT_EQ(in.mapping.held(3), 0U);
  EXPECT_EQ(in.mapping.held(4), 0U);
  EXPECT_EQ(Mapped("(4294967295,4294967297)", 1ULL << 40U, {}).mapping.held(2), 0U);
  EXPECT_THAT(Mapped("(0,9,10,-1,5)", 9, {.held = 1, .chunk = 2}).lookedUp({1, 2, 3, 4, 5, 0}),
              ElementsAre(0, 9, 0, 0, 5, 0));
}

TEST(IndexMapping, LooksUpEntriesInAnyOrder) {
  for (const std::size_t chunk : {1U, 2U, 3U, 7U, 8U}) {
    Mapped in("(70,60,50,40,30,20,10)", 100, {.held = 4, .chunk = chunk});
    EXPECT_THAT(in.lookedUp({7, 1, 4, 0, 1, 6}), ElementsAre(10, 70, 40, 0, 70, 20)) << chunk;
    EXPECT_THAT(in.lookedUp({2, 3}), ElementsAre(60, 50)) << chunk;
    EXPECT_THAT(in.lookedUp({}), ElementsAre()) << chunk;
  }
}

TEST(IndexMapping, LooksUpWhatItWouldHold) {
  std::mt19937 random(1);
  for (const std::size_t size : {1'000U, 70'000U}) {
    std::string list = "(/**/";
    for (std::size_t i = 0; i < size; ++i) {
      static const char* const kBetween[] = {",", " ,", ",\n", ",/* 1, */", ", \r\n"};
      list += (i == 0 ? "" : kBetween[test::pick(random, 5)]) +
              std::to_string(test::pick(random, 100'000));
    }
    list += " )";
    const Mapped held(list, 90'000, {});
    Mapped other(list, 90'000, {.held = 999, .chunk = size / 70});
    ASSERT_FALSE(other.mapping.isHeld());
    for (int round = 0; round < 5; ++round) {
      std::vector<std::uint32_t> indices;
      std::vector<std::uint32_t> expected;
      for (std::size_t i = test::pick(random, 500); i > 0; --i) {
        indices.push_back(static_cast<std::uint32_t>(test::pick(random, size + 1)));
        expected.push_back(indices.back() == 0 ? 0 : held.mapping.held(indices.back()));
      }
      ASSERT_EQ(other.lookedUp(indices), expected);
    }
  }
}

TEST(IndexMapping, RejectsWhatIsNoNumber) {
  for (const std::size_t limit : {1U, 9U}) {
    EXPECT_FALSE(Mapped("(1,2,x)", 9, {.held = limit}).isRead);
    EXPECT_FALSE(Mapped("(1,2", 9, {.held = limit}).isRead);
  }
}

}  // namespace
}  // namespace plenvorith
