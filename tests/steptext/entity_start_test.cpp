#include "steptext/entity_start.h"

#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "tests/reference/reference_entity_table.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::forEveryString;
using test::referenceEntityNameLength;

TEST(EntityStart, MeasuresTheNameBeforeTheEqualsSign) {
  EXPECT_EQ(entityNameLength("#1=FOO;"), 2U);
  EXPECT_EQ(entityNameLength("#0012="), 5U);
  EXPECT_EQ(entityNameLength("#12==A"), 3U);
  EXPECT_EQ(entityNameLength("#123456789012345678901234567890=A"), 31U);
}

TEST(EntityStart, RejectsWhatIsNotNumberSignDigitsAndEqualsSignAtTheVeryStart) {
  for (const std::string_view line :
       {"", "#", "#1", "#=A", "1=A", "=A", " #1=A", "\r#1=A", "##1=A", "#1 =A", "# 1=A", "#1\r=A",
        "#A=B", "#1A=B", "#-1=A", "#1", "A#1=B"}) {
    EXPECT_EQ(entityNameLength(line), 0U) << line;
  }
}

TEST(EntityStart, RejectsDigitsThatAreNotAscii) {
  EXPECT_EQ(entityNameLength("#\xB2=A"), 0U);          // superscript two in ISO 8859-1
  EXPECT_EQ(entityNameLength("#\xD9\xA1=A"), 0U);      // Arabic one in UTF-8
  EXPECT_EQ(entityNameLength("#\xEF\xBC\x91=A"), 0U);  // full-width one in UTF-8
}

TEST(EntityStart, RejectsANulInTheName) {
  EXPECT_EQ(entityNameLength(std::string_view("#1\0=A", 5)), 0U);
}

TEST(EntityStart, AgreesWithTheRegularExpressionOnEveryShortString) {
  forEveryString({"#", "1", "=", " ", "\r", "A", ";"}, 7, [](const std::string& line) {
    ASSERT_EQ(entityNameLength(line), referenceEntityNameLength(line)) << line;
  });
}

}  // namespace
}  // namespace plenvorith
