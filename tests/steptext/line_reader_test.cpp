#include "steptext/line_reader.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/memory_file.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::forEveryString;
using test::MemoryFile;
using test::pick;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace std::string_literals;

constexpr std::size_t kReadAtOnce = std::size_t{1} << 16U;

/// The lines that a reader hands out, put together from their pieces.
std::vector<std::string> linesOf(LineReader& reader) {
  std::vector<std::string> lines;
  std::string_view piece;
  bool wasEnd = true;
  while (reader.next(piece)) {
    EXPECT_EQ(reader.startsLine(), wasEnd);
    wasEnd = reader.endsLine();
    if (reader.startsLine()) {
      lines.emplace_back();
    }
    lines.back() += piece;
  }
  EXPECT_TRUE(wasEnd);
  return lines;
}

std::vector<std::string> linesIn(std::string_view content) {
  static MemoryFile memory;
  BlockReader file(memory.write(content));
  LineReader reader(file);
  return linesOf(reader);
}

TEST(LineReader, SplitsAtLineFeeds) {
  EXPECT_THAT(linesIn("a\nbc\n\nd\n"), ElementsAre("a", "bc", "", "d"));
}

TEST(LineReader, KeepsCarriageReturns) {
  EXPECT_THAT(linesIn("a\r\nb\rc\r\r\n\r"), ElementsAre("a\r", "b\rc\r\r", "\r"));
}

TEST(LineReader, TakesALastLineWithoutALineFeed) {
  EXPECT_THAT(linesIn("a\nb"), ElementsAre("a", "b"));
  EXPECT_THAT(linesIn("\n"), ElementsAre(""));
  EXPECT_THAT(linesIn(""), IsEmpty());
}

TEST(LineReader, KeepsNuls) {
  EXPECT_THAT(linesIn("a\0b\n\0\n"s), ElementsAre("a\0b"s, "\0"s));
}

TEST(LineReader, HasNoLinesForAMissingFile) {
  BlockReader file("/nonexistent/missing.stp");
  LineReader reader(file);
  EXPECT_THAT(linesOf(reader), IsEmpty());
}

TEST(LineReader, GoesOnFromTheEndOfTheLastBlock) {
  MemoryFile memory;
  BlockReader file(memory.write("a\nb\nc\n"));
  std::string_view block;
  ASSERT_TRUE(file.next(block));
  LineReader reader(file, block.substr(2));
  EXPECT_THAT(linesOf(reader), ElementsAre("b", "c"));
}

/// The slow, obvious way.
std::vector<std::string> referenceLines(const std::string& content) {
  std::vector<std::string> lines;
  bool isOpen = false;
  for (const char c : content) {
    if (!isOpen) {
      lines.emplace_back();
    }
    isOpen = c != '\n';
    if (isOpen) {
      lines.back() += c;
    }
  }
  return lines;
}

TEST(LineReaderAgainstReference, AgreesOnEveryShortText) {
  forEveryString({"\n", "\r", "#", "1"}, 6, [](const std::string& text) {
    ASSERT_EQ(linesIn(text), referenceLines(text)) << testing::PrintToString(text);
  });
}

TEST(LineReaderAgainstReference, AgreesOnLinesOfAnyLength) {
  std::mt19937 random(3);
  for (int i = 0; i < 30; ++i) {
    std::string content;
    while (content.size() < 1'000'000) {
      const std::size_t limit = std::size_t{1} << pick(random, 20);
      content += std::string(pick(random, limit), static_cast<char>('a' + pick(random, 26)));
      content += pick(random, 4) == 0 ? "\r\n" : "\n";
    }
    content += pick(random, 2) == 0 ? "" : "end";
    ASSERT_TRUE(linesIn(content) == referenceLines(content)) << i;
  }
}

TEST(LineReader, CutsOnlyLinesOf64KiBOrMore) {
  MemoryFile memory;
  for (const std::size_t length : {kReadAtOnce - 1, 3 * kReadAtOnce}) {
    BlockReader file(memory.write(std::string(length, 'x') + "\ny\n"));
    LineReader reader(file);
    std::size_t pieces = 0;
    std::string_view piece;
    do {
      ASSERT_TRUE(reader.next(piece));
      ++pieces;
    } while (!reader.endsLine());
    EXPECT_EQ(pieces > 1, length >= kReadAtOnce) << length;
    ASSERT_TRUE(reader.next(piece));
    EXPECT_EQ(piece, "y");
  }
}

TEST(LineReader, NeverCutsAnInstanceName) {
  MemoryFile memory;
  const std::string name = "#" + std::string(2 * kReadAtOnce + 5, '7');
  BlockReader file(memory.write(name + "=" + std::string(kReadAtOnce, 'x') + "\n"));
  LineReader reader(file);
  std::string_view piece;
  ASSERT_TRUE(reader.next(piece));
  EXPECT_TRUE(piece.starts_with(name + "="));
}

}  // namespace
}  // namespace plenvorith
