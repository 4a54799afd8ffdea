#include "steptext/text_arena.h"

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::pick;

TEST(TextArena, LetsATextGrow) {
  TextArena arena;
  arena.begin();
  EXPECT_EQ(arena.text(), "");
  arena.append("#1=A");
  arena.append("");
  arena.append(",B;\r");
  EXPECT_EQ(arena.text(), "#1=A,B;\r");
  arena.begin();
  EXPECT_EQ(arena.text(), "");
}

TEST(TextArena, PutsTextsOneBehindTheOther) {
  TextArena arena;
  arena.expect(1000);
  arena.begin();
  arena.append("abc");
  const std::string_view first = arena.text();
  arena.begin();
  arena.append("de");
  EXPECT_EQ(arena.text().data(), first.data() + first.size());
}

TEST(TextArena, LetsTextsBeMadeInPlace) {
  TextArena arena;
  const std::string bytes = "none#1=A#2=B";
  const std::span<char> room = arena.room(bytes.size());
  ASSERT_GE(room.size(), bytes.size());
  bytes.copy(room.data(), bytes.size());
  EXPECT_EQ(arena.text(), "");
  arena.grow(bytes.size());
  EXPECT_EQ(arena.text(), bytes);
  arena.dropFirst(4);
  EXPECT_EQ(arena.text(), "#1=A#2=B");
  const std::string_view first = arena.text().substr(0, 4);
  arena.beginAt(4);
  EXPECT_EQ(arena.text(), "#2=B");
  arena.data()[3] = 'C';
  // The text that is not done moves, the one that is stays.
  const std::size_t more = arena.room(1).size() + 1;
  arena.grow(arena.room(more).size() > 0 ? 1 : 0);
  EXPECT_EQ(arena.text().substr(0, 4), "#2=C");
  EXPECT_EQ(first, "#1=A");
}

/// Texts of many lengths, in pieces, with what they have to be in the end.
void expectTextsToStay(TextArena arena, std::size_t longest) {
  std::mt19937 random(1);
  std::vector<std::pair<std::string_view, std::string>> texts;
  for (std::size_t total = 0; total < 20 * longest;) {
    arena.begin();
    std::string expected;
    for (std::size_t pieces = pick(random, 5); pieces > 0; --pieces) {
      const std::string piece(pick(random, longest), static_cast<char>('a' + pick(random, 26)));
      arena.append(piece);
      expected += piece;
      total += piece.size() + 1;
    }
    texts.emplace_back(arena.text(), expected);
  }
  TextArena moved = std::move(arena);
  moved.begin();
  moved.append("more");
  unsigned sum = 0;
  for (const auto& [text, expected] : texts) {
    ASSERT_TRUE(text == expected);
    // A sanitizer sees whether this much may be read.
    for (std::size_t i = 0; text.data() != nullptr && i < TextArena::kReadable; ++i) {
      sum += static_cast<unsigned char>(text.data()[text.size() + i]);
    }
  }
  EXPECT_NE(sum, 0U);
}

TEST(TextArena, KeepsTextsWhereTheyAre) {
  expectTextsToStay(TextArena(), 100);
  expectTextsToStay(TextArena(), 100'000);
  TextArena expecting;
  expecting.expect(300'000);
  expectTextsToStay(std::move(expecting), 100'000);
}

TEST(TextArena, DoesWithLessThanWasExpected) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer ends the program instead of saying that there is no memory";
#endif
  TextArena arena;
  arena.expect(std::size_t{1} << 62U);
  arena.begin();
  arena.append("abc");
  EXPECT_EQ(arena.text(), "abc");
}

}  // namespace
}  // namespace plenvorith
