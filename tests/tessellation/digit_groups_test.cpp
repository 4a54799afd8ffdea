#include "tessellation/digit_groups.h"

#include <array>
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

/// Digits with eight characters in front of their end, whatever those are that are no digits of it.
struct Written {
  std::string characters;
  int count = 0;
  std::int32_t number = 0;
};

/// Converts the groups as one array, each in memory of its own of just eight bytes, so that a
/// sanitizer sees what is read around it.
template <std::size_t Count>
void expectNumbers(const std::array<Written, Count>& written) {
  std::vector<std::vector<char>> memory;
  std::array<DigitGroup, Count> groups;
  std::array<std::int32_t, Count> expected{};
  for (std::size_t i = 0; i < Count; ++i) {
    const std::string& characters = written[i].characters;
    ASSERT_EQ(characters.size(), 8U);
    memory.emplace_back(characters.begin(), characters.end());
    groups[i] = {memory.back().data() + 8, written[i].count};
    expected[i] = written[i].number;
  }
  EXPECT_EQ(convertDigitGroups(groups), expected) << written[0].characters;
  EXPECT_EQ(convertDigitGroupsPortably(groups), expected) << written[0].characters;
}

TEST(DigitGroups, AreNumbersOfUpToEightDigits) {
  const Written none{"12345678", 0, 0};
  const Written zero{"(1.,-2,0", 1, 0};
  const Written three{"00000123", 3, 123};
  const Written all{"12345678", 8, 12'345'678};
  const Written most{"99999999", 8, 99'999'999};
  const Written leadingZeros{"5,000042", 6, 42};
  expectNumbers<4>({none, zero, three, all});
  expectNumbers<8>({most, leadingZeros, all, none, zero, three, most, all});
}

TEST(DigitGroups, TakeEveryPlaceForWhatItIsWorth) {
  for (int place = 0; place < 8; ++place) {
    std::int32_t worth = 1;
    for (int i = place; i < 7; ++i) {
      worth *= 10;
    }
    for (int digit = 0; digit <= 9; ++digit) {
      std::string characters = "00000000";
      characters[static_cast<std::size_t>(place)] = static_cast<char>('0' + digit);
      const Written one{characters, 8, digit * worth};
      expectNumbers<4>({one, one, one, one});
    }
  }
}

TEST(DigitGroups, DoNotCareWhatIsInFrontOfThem) {
  for (int byte = 0; byte < 256; ++byte) {
    for (int count = 0; count <= 7; ++count) {
      std::string characters(8, '7');
      characters[static_cast<std::size_t>(7 - count)] = static_cast<char>(byte);
      const std::string digits(static_cast<std::size_t>(count), '7');
      const Written one{characters, count, count == 0 ? 0 : std::stoi(digits)};
      expectNumbers<4>({one, one, one, one});
    }
  }
}

TEST(DigitGroups, AreRightForRandomDigits) {
  std::mt19937 random(2);
  for (int i = 0; i < test::rounds(100'000); ++i) {
    std::array<Written, 8> written;
    for (Written& one : written) {
      one.count = static_cast<int>(test::pick(random, 9));
      for (int place = 8; place > 0; --place) {
        const auto digit = static_cast<std::int32_t>(test::pick(random, 10));
        const auto other = static_cast<char>(test::pick(random, 256));
        one.characters += place > one.count ? other : static_cast<char>('0' + digit);
        one.number = place > one.count ? 0 : 10 * one.number + digit;
      }
    }
    expectNumbers<8>(written);
  }
}

}  // namespace
}  // namespace plenvorith
