#include "exchange/raw_text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/memory_file.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 17U;

/// The bytes that `peek` gives one after the other.
std::string peeked(RawText& text) {
  std::string bytes;
  for (int c = text.peek(); c >= 0; c = text.peek()) {
    bytes += static_cast<char>(c);
    text.skip(1);
  }
  return bytes;
}

/// The same without a look at more than one byte at once.
std::string withoutBlanksAndComments(std::string_view text) {
  std::string bytes;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (text.substr(place, 2) == "/*") {
      place = text.find("*/", place + 2);
      if (place == std::string_view::npos) {
        return bytes;
      }
      ++place;
    } else if (text[place] != ' ' && text[place] != '\n') {
      bytes += text[place];
    }
  }
  return bytes;
}

TEST(RawText, GivesNoBlanksAndComments) {
  test::MemoryFile file;
  RawText text(file.write(" a\t/* b */c\r\n/**//***/ d/e\x80 "));
  EXPECT_TRUE(text.isOpen());
  EXPECT_EQ(peeked(text), "acd/e\x80");
  EXPECT_EQ(text.error(), "");
}

TEST(RawText, GivesWhatTheLoopGivesOfEveryShortText) {
  test::MemoryFile file;
  test::forEveryString({"/", "*", " ", "a"}, 7, [&file](const std::string& content) {
    RawText text(file.write(content));
    ASSERT_EQ(peeked(text), withoutBlanksAndComments(content)) << content;
  });
}

TEST(RawText, ReadsCommentsAcrossBlocks) {
  test::MemoryFile file;
  for (std::size_t before = kBlock - 8; before < kBlock + 2; ++before) {
    RawText text(file.write(std::string(before, ' ') + "a/* **/b/**/c"));
    EXPECT_EQ(peeked(text), "abc") << before;
  }
}

TEST(RawText, RejectsACommentThatNeverEnds) {
  test::MemoryFile file;
  RawText text(file.write("a/* b *"));
  EXPECT_EQ(peeked(text), "a");
  EXPECT_EQ(text.error(), "a comment never ends");
}

TEST(RawText, HasAsMuchAtHandAsIsAskedFor) {
  test::MemoryFile file;
  RawText text(file.write(std::string(kBlock, 'a') + "bc"));
  EXPECT_EQ(text.atHand(), "");
  ASSERT_TRUE(text.ensure(1));
  text.skip(kBlock - 1);
  ASSERT_TRUE(text.ensure(3));
  EXPECT_EQ(text.atHand(), "abc");
  EXPECT_FALSE(text.ensure(4));
  EXPECT_EQ(text.atHand(), "abc");
  EXPECT_EQ(text.error(), "");
}

TEST(RawText, TellsWhereItStandsAndGoesThere) {
  std::string content;
  for (int i = 0; i < 300'000; ++i) {
    content += static_cast<char>('a' + i % 23);
  }
  test::MemoryFile file;
  RawText text(file.write(content));
  for (const std::size_t place : {std::size_t{5}, std::size_t{4}, kBlock + 1, kBlock, kBlock - 1,
                                  content.size() - 1, std::size_t{0}}) {
    ASSERT_TRUE(text.seek(place));
    EXPECT_EQ(text.offset(), place);
    EXPECT_EQ(text.peek(), content[place]);
    EXPECT_EQ(text.offset(), place);
    text.skip(1);
    EXPECT_EQ(text.offset(), place + 1);
  }
  ASSERT_TRUE(text.seek(content.size()));
  EXPECT_EQ(text.peek(), -1);
}

TEST(RawText, TellsOfEveryBlock) {
  test::MemoryFile file;
  RawText text(file.write(std::string(kBlock + 10, 'a')));
  std::vector<std::uint64_t> places;
  text.onBlock([&places](std::uint64_t place) { places.push_back(place); });
  EXPECT_EQ(peeked(text).size(), kBlock + 10);
  EXPECT_THAT(places, testing::ElementsAre(kBlock, kBlock + 10, kBlock + 10));
}

TEST(RawText, RejectsWhatCannotBeRead) {
  RawText text("/proc/self/mem");  // nothing is at its start
  EXPECT_TRUE(text.isOpen());
  EXPECT_EQ(text.peek(), -1);
  EXPECT_EQ(text.error(), "cannot be read to its end");
  EXPECT_FALSE(RawText("/nonexistent").isOpen());
}

TEST(RawText, KeepsTheFirstError) {
  test::MemoryFile file;
  RawText text(file.write(""));
  text.fail("one");
  text.fail("two");
  EXPECT_EQ(text.error(), "one");
}

}  // namespace
}  // namespace plenvorith
