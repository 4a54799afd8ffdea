#include "batch/state/names.h"

#include <string>

#include <gmock/gmock.h>

#include "batch/version.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

TEST(PlacesIn, StandBelowTheOutputFolder) {
  const Places places = placesIn("/out");
  EXPECT_EQ(places.state, "/out/.plenvorith-batch");
  EXPECT_EQ(places.database, "/out/.plenvorith-batch/state.db");
  EXPECT_EQ(placesIn("/").run, "/.plenvorith-batch/run");
}

TEST(OutputNameFor, KeepsTheFullName) {
  ConversionSettings settings;
  EXPECT_EQ(outputNameFor("/in/a.STEP", settings), "a.STEP.stl");
  settings.to = "stp";
  EXPECT_EQ(outputNameFor("/in/a.stp", settings), "a.stp.stp");
}

TEST(TranscriptFor, CutsOnlyWhatIsTooLong) {
  EXPECT_EQ(transcriptFor("sub/a.stp"), "transcripts/sub/a.stp.txt");
  const std::string fits(251, 'a');
  EXPECT_EQ(transcriptFor("b/" + fits), "transcripts/b/" + fits + ".txt");
  const std::string one = transcriptFor("b/" + std::string(252, 'a'));
  const std::string other = transcriptFor("b/" + std::string(251, 'a') + 'b');
  EXPECT_THAT(one, testing::StartsWith("transcripts/b/" + std::string(200, 'a') + '~'));
  EXPECT_EQ(one.size(), std::string("transcripts/b/").size() + 200 + 1 + 16 + 4);
  EXPECT_NE(one, other);
}

TEST(SettingsText, HoldsAllThatDecides) {
  ConversionSettings settings;
  EXPECT_EQ(settingsText(settings), "to=stl deflection=0.1");
  settings.split = true;
  settings.prepare = true;
  settings.timeLimit = std::chrono::seconds(1);
  settings.memoryLimit = 1;
  EXPECT_EQ(settingsText(settings), "to=stl deflection=0.1 split prepare");
}

TEST(ProgramText, TellsProgramsApart) {
  const test::TempDir dir;
  ConversionSettings settings;
  EXPECT_EQ(programText(settings), versionText());
  settings.program = test::writeFile(dir / "x", "1");
  const std::string before = programText(settings);
  test::writeFile(dir / "x", "12");
  EXPECT_NE(programText(settings), before);
}

}  // namespace
}  // namespace plenvorith
