#include "tessellation/digit_marks.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rounds.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

template <std::size_t Size>
void expectMarks(const std::string& text) {
  // Memory of just this size, so that a sanitizer sees what is read behind its end.
  const std::vector<char> characters(text.begin(), text.begin() + Size);
  std::uint64_t expected = 0;
  for (std::size_t i = 0; i < Size; ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    expected |= (isDigit ? std::uint64_t{0} : std::uint64_t{1}) << i;
  }
  ASSERT_EQ(markNonDigits<Size>(characters.data()), expected) << testing::PrintToString(text);
  ASSERT_EQ(markNonDigitsPortably<Size>(characters.data()), expected)
      << testing::PrintToString(text);
}

void expectMarksOfEverySize(const std::string& text) {
  expectMarks<16>(text);
  expectMarks<32>(text);
  expectMarks<48>(text);
  expectMarks<64>(text);
}

TEST(DigitMarks, TellDigitsFromEveryOtherByteAtEveryPlace) {
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t place = 0; place < 64; ++place) {
      for (const char other : {'5', ','}) {
        std::string text(64, other);
        text[place] = static_cast<char>(byte);
        expectMarksOfEverySize(text);
      }
    }
  }
}

TEST(DigitMarks, AreRightForRandomBytes) {
  std::mt19937 random(1);
  for (int i = 0; i < test::rounds(100'000); ++i) {
    std::string text(64, '0');
    for (char& c : text) {
      c = static_cast<char>(test::pick(random, 2) == 0 ? '0' + test::pick(random, 10)
                                                       : test::pick(random, 256));
    }
    expectMarksOfEverySize(text);
  }
}

}  // namespace
}  // namespace plenvorith
