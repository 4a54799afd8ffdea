#include "exchange/byte_scan.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rounds.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

/// The plain loops that the product's functions are compared with.
std::size_t specialIn(const std::vector<char>& text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const bool isBlank = static_cast<unsigned char>(text[i]) <= ' ';
    if (isBlank || std::string_view("'/;").find(text[i]) != std::string_view::npos ||
        (text[i] == '#' && text[i + 1] == '0')) {
      return i;
    }
  }
  return text.empty() ? 0 : text.size() - 1;
}

std::size_t markIn(const std::vector<char>& text, Parentheses& counts) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (std::string_view("'/;").find(text[i]) != std::string_view::npos) {
      return i;
    }
    counts.opened += text[i] == '(' ? 1U : 0U;
    counts.closed += text[i] == ')' ? 1U : 0U;
  }
  return text.size();
}

/// The text is in memory of exactly its size, so that sanitizers see a byte too many being read.
void expectWhatTheLoopsFind(const std::vector<char>& text) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  ASSERT_EQ(findSpecial(begin, end) - begin, static_cast<std::ptrdiff_t>(specialIn(text)))
      << std::string(text.begin(), text.end());
  Parentheses found = {7, 5};
  Parentheses expected = {7, 5};
  const std::size_t mark = markIn(text, expected);
  ASSERT_EQ(findMark(begin, end, found) - begin, static_cast<std::ptrdiff_t>(mark))
      << std::string(text.begin(), text.end());
  ASSERT_EQ(found.opened, expected.opened) << std::string(text.begin(), text.end());
  ASSERT_EQ(found.closed, expected.closed) << std::string(text.begin(), text.end());
}

TEST(ByteScan, FindsEveryByteAtEveryPlace) {
  for (std::size_t size = 1; size <= 70; ++size) {
    std::vector<char> text(size, '1');
    for (std::size_t place = 0; place < size; ++place) {
      for (int byte = 0; byte < 256; byte += test::stride(3)) {
        text[place] = static_cast<char>(byte);
        expectWhatTheLoopsFind(text);
      }
      text[place] = place % 3 == 0 ? '(' : '1';
    }
  }
}

TEST(ByteScan, FindsReferencesWithLeadingZerosAtEveryPlace) {
  for (std::size_t size = 2; size <= 70; ++size) {
    for (std::size_t place = 0; place + 1 < size; ++place) {
      std::vector<char> text(size, '#');
      text[place + 1] = '0';
      expectWhatTheLoopsFind(text);
    }
  }
}

TEST(ByteScan, FindsNothingInNothing) {
  const char c = ';';
  Parentheses counts;
  EXPECT_EQ(findSpecial(&c, &c), &c);
  EXPECT_EQ(findMark(&c, &c, counts), &c);
  EXPECT_EQ(counts.opened + counts.closed, 0U);
}

TEST(ByteScan, CountsMoreParenthesesThanAByteHolds) {
  for (const std::size_t size : {4'079U, 4'080U, 4'081U, 4'096U, 100'000U}) {
    for (const char parenthesis : {'(', ')'}) {
      std::vector<char> text(size, parenthesis);
      expectWhatTheLoopsFind(text);
      text.back() = ';';
      expectWhatTheLoopsFind(text);
    }
  }
}

TEST(ByteScan, FindsWhatTheLoopsFindInRandomTexts) {
  std::mt19937 random(1);
  const std::vector<std::string> pieces = {"#0", "#1", "(", ")", ",", "1.5", "ABCDEFGH", "\x80"};
  const std::vector<std::string> ends = {"", "'", "\"", "/", ";", " ", "\n", "#"};
  for (int i = 0; i < test::rounds(20'000); ++i) {
    const std::string text = test::randomText(random, pieces, 60) +
                             ends[test::pick(random, ends.size())] +
                             test::randomText(random, pieces, 10);
    expectWhatTheLoopsFind({text.begin(), text.end()});
  }
}

}  // namespace
}  // namespace plenvorith
