#include "batch/inputs/input_facts.h"

#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

InputFacts factsOfText(const std::string& text) {
  const test::TempDir dir;
  return factsOf(test::writeFile(dir / "a.stp", text));
}

TEST(FactsOf, FindsStartAndEnd) {
  const InputFacts whole = factsOfText("ISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n");
  EXPECT_TRUE(whole.isWhole && whole.hasStart && whole.hasEnd);
  EXPECT_FALSE(whole.hasTessellation || whole.hasExactGeometry);
  const InputFacts onlyEnd = factsOfText("END-ISO-10303-21;\n");
  EXPECT_FALSE(onlyEnd.hasStart);
  EXPECT_TRUE(onlyEnd.hasEnd);
  const InputFacts onlyStart = factsOfText("ISO-10303-21;\nDATA;\n#1=");
  EXPECT_TRUE(onlyStart.hasStart);
  EXPECT_FALSE(onlyStart.hasEnd);
}

TEST(FactsOf, FindsWordsInAnyCase) {
  const InputFacts facts = factsOfText(
      "iso-10303-21;\nData;\n#1=Triangulated_Face();#2=advanced_FACE();\nend-iso-10303-21;\n");
  EXPECT_TRUE(facts.hasStart && facts.hasEnd && facts.hasTessellation && facts.hasExactGeometry);
  EXPECT_FALSE(factsOfText("end-iso-10303-21;\n").hasStart);
}

TEST(FactsOf, TellsWhatFilesAreThatAreNoStep) {
  EXPECT_EQ(factsOfText("\x1f\x8b\x08 and more").form, "packed with gzip");
  EXPECT_EQ(factsOfText("PK\x03\x04 and more").form, "packed with zip");
  EXPECT_EQ(factsOfText(std::string("\xff\xfeI\0S\0", 6)).form, "text in UTF-16");
  EXPECT_EQ(factsOfText(std::string("\xfe\xff\0I\0S", 6)).form, "text in UTF-16");
  EXPECT_EQ(factsOfText(std::string("I\0S\0O\0", 6)).form, "text in UTF-16");
  EXPECT_EQ(factsOfText(std::string("\0I\0S\0O", 6)).form, "text in UTF-16");
  EXPECT_EQ(factsOfText("ISO-10303-21;").form, "");
  EXPECT_EQ(factsOfText("\xef\xbb\xbfISO-10303-21;").form, "");
  EXPECT_EQ(factsOfText("").form, "");
}

TEST(HoldsTessellation, FindsItAcrossBlocks) {
  const test::TempDir dir;
  for (const std::size_t before : {0U, 262'130U, 262'140U, 262'144U, 600'000U}) {
    const std::string text = std::string(before, ' ') + "#1=TESSELLATED_SOLID(";
    EXPECT_TRUE(holdsTessellation(test::writeFile(dir / "a.stp", text))) << before;
  }
  EXPECT_FALSE(holdsTessellation(test::writeFile(dir / "b.stp", "#1=ADVANCED_FACE(")));
  EXPECT_FALSE(holdsTessellation(dir / "none.stp"));
}

TEST(FactsOf, FindsGeometry) {
  EXPECT_TRUE(factsOfText("#1=TRIANGULATED_FACE(").hasTessellation);
  EXPECT_TRUE(factsOfText("#1=COMPLEX_TRIANGULATED_SURFACE_SET(").hasTessellation);
  EXPECT_TRUE(factsOfText("#1=TESSELLATED_SHELL(").hasTessellation);
  EXPECT_TRUE(factsOfText("#1=MANIFOLD_SOLID_BREP(").hasExactGeometry);
  EXPECT_TRUE(factsOfText("#1=ADVANCED_FACE(").hasExactGeometry);
}

TEST(FactsOf, FindsWordsWhereverBlocksEnd) {
  constexpr std::size_t kBlock = std::size_t{1} << 18;
  for (std::size_t before = kBlock - 20; before < kBlock + 2; ++before) {
    const InputFacts facts = factsOfText(std::string(before, ' ') + "END-ISO-10303-21;");
    EXPECT_TRUE(facts.hasEnd) << before;
    EXPECT_FALSE(facts.hasStart) << before;
  }
}

TEST(FactsOf, LeavesOtherThanRegularFilesAlone) {
  const test::TempDir dir;
  ASSERT_EQ(mkfifo((dir / "pipe.stp").c_str(), 0600), 0);
  EXPECT_FALSE(factsOf(dir / "pipe.stp").isWhole);
  EXPECT_FALSE(factsOf(dir / "missing").isWhole);
}

TEST(EndsInTheMiddle, LooksAtTheEndFirstAndThenAtAll) {
  const test::TempDir dir;
  const std::string end = "END-ISO-10303-21;\n";
  EXPECT_FALSE(endsInTheMiddle(test::writeFile(dir / "a", end)));
  EXPECT_FALSE(endsInTheMiddle(test::writeFile(dir / "small", "End-Iso-10303-21;\n")));
  EXPECT_FALSE(endsInTheMiddle(test::writeFile(dir / "b", end + std::string(9000, '\0'))));
  EXPECT_TRUE(endsInTheMiddle(test::writeFile(dir / "c", "ISO-10303-21;\nDATA;\n#1=")));
  EXPECT_FALSE(endsInTheMiddle(dir / "missing"));
}

}  // namespace
}  // namespace plenvorith
