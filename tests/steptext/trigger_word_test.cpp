#include "steptext/trigger_word.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

TEST(TriggerWord, IsFoundAnywhere) {
  EXPECT_TRUE(holdsTriggerWord("TESSELLATED_"));
  EXPECT_TRUE(holdsTriggerWord("#1=TESSELLATED_SOLID('',(#3),$);\n"));
  EXPECT_TRUE(holdsTriggerWord("COMPLEX_TRIANGULATED_"));
  EXPECT_TRUE(holdsTriggerWord("'a' /* COMPLEX_TRIANGULATED_FACE */"));
  EXPECT_TRUE(holdsTriggerWord("XTESSELLATED_X"));
}

TEST(TriggerWord, HasToBeWhole) {
  EXPECT_FALSE(holdsTriggerWord(""));
  EXPECT_FALSE(holdsTriggerWord("TESSELLATED"));
  EXPECT_FALSE(holdsTriggerWord("ESSELLATED_"));
  EXPECT_FALSE(holdsTriggerWord("TESSELLATED\n_"));
  EXPECT_FALSE(holdsTriggerWord("tessellated_"));
  EXPECT_FALSE(holdsTriggerWord("TRIANGULATED_FACE"));
  EXPECT_FALSE(holdsTriggerWord("COMPLEX_TRIANGULATED"));
  EXPECT_FALSE(holdsTriggerWord("LAT"));
}

TEST(TriggerWord, IsFoundAtEveryPlaceOfALongText) {
  for (const std::string word : {"TESSELLATED_", "COMPLEX_TRIANGULATED_"}) {
    EXPECT_LE(word.size(), kLongestTriggerWord);
    for (std::size_t place = 4000; place <= 4200; ++place) {
      const std::string before = "LAT" + std::string(place, 'x');
      ASSERT_TRUE(holdsTriggerWord(before + word)) << place;
      ASSERT_TRUE(holdsTriggerWord(before + word + std::string(5000, 'x'))) << place;
      ASSERT_FALSE(holdsTriggerWord(before + word.substr(0, word.size() - 1))) << place;
    }
  }
}

TEST(TriggerWordAgainstReference, AgreesOnEveryShortTextOfItsPieces) {
  test::forEveryString(
      {"TESSEL", "LAT", "ED_", "COMPLEX_", "TRIANGU", " "}, 6, [](const std::string& text) {
        const bool expected = text.find("TESSELLATED_") != std::string::npos ||
                              text.find("COMPLEX_TRIANGULATED_") != std::string::npos;
        ASSERT_EQ(holdsTriggerWord(text), expected) << text;
      });
}

}  // namespace
}  // namespace plenvorith
