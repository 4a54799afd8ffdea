#include "batch/state/own_outputs.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "batch/state/state.h"
#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindOwnOutputs, KnowsThemByEachPathThatLeadsThere) {
  const test::TempDir dir;
  const Places places = placesIn(dir / "out");
  ASSERT_TRUE(makeFolders(places.state) && makeFolders(dir / "out/sub"));
  fs::create_symlink("out/sub", dir / "link");
  fs::create_symlink("out", dir / "other");
  const std::vector<InputFile> files = {
      {dir / "in/a.stp", 1},          {dir / "link/a.stp.stp", 1},
      {dir / "other/b.stp.stp", 1},   {dir / "other/sub/a.stp.stp", 1},
      {dir / "out/b.stp.stp", 1},     {dir / "out/mine.stp", 1},
      {dir / "out/sub/a.stp.stp", 1}, {dir / "outer/b.stp.stp", 1},
      {dir / "sub/a.stp.stp", 1}};
  EXPECT_THAT(findOwnOutputs(places, files), IsEmpty());

  const State state = test::openedState(places.database);
  FileRecord record;
  record.path = dir / "in/a.stp";
  record.outputs = {{"sub/a.stp.stp", 1}, {"b.stp.stp", 1}};
  ASSERT_TRUE(beginChanges(*state) && putFile(*state, record) && commitChanges(*state));
  EXPECT_THAT(
      findOwnOutputs(places, files),
      ElementsAre(dir / "link/a.stp.stp", dir / "other/b.stp.stp", dir / "other/sub/a.stp.stp",
                  dir / "out/b.stp.stp", dir / "out/sub/a.stp.stp"));
}

}  // namespace
}  // namespace plenvorith
