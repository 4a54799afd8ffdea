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

TEST(WorkNameFor, IsAnotherWhereTheKernelWouldChangeIt) {
  ConversionSettings settings;
  EXPECT_EQ(workNameFor("/\xff/a b~.STEP", settings), "a b~.STEP.stl");
  settings.to = "stp";
  for (const char* const name :
       {"/in/\xff.stp", "/in/\xc3\xbc.stp", "/in/\n.stp", "/in/\x7f.stp"}) {
    EXPECT_EQ(workNameFor(name, settings), "output.stp");
  }
}

TEST(SettingsText, HoldsAllThatDecides) {
  ConversionSettings settings;
  EXPECT_EQ(settingsText(settings), "to=stl deflection=0.1");
  settings.split = true;
  settings.parts = true;
  settings.prepare = true;
  settings.timeLimit = std::chrono::seconds(1);
  settings.memoryLimit = 1;
  EXPECT_EQ(settingsText(settings), "to=stl deflection=0.1 split parts prepare");
  EXPECT_EQ(settingsText(settingsFrom("to=stp deflection=0.25 split parts prepare")),
            "to=stp deflection=0.25 split parts prepare");
  EXPECT_EQ(settingsText(settingsFrom("to=stl deflection=1e-2")), "to=stl deflection=1e-2");
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
