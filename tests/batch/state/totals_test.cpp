#include "batch/state/totals.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "batch/state/state.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;

class TotalsTest : public testing::Test {
 protected:
  void put(const std::string& path, FileStatus status, const std::string& reason) {
    FileRecord file;
    file.path = path;
    file.status = status;
    file.reason = reason;
    file.size = 1000;
    file.triangles = 12;
    file.seconds = 0.5;
    file.outputs = {{path + ".stl", 684}};
    EXPECT_TRUE(putFile(*state, file));
  }

  std::vector<std::string> shown(std::int64_t atMost) {
    std::vector<std::string> paths;
    EXPECT_TRUE(forEachFileToShow(*state, atMost, [&](const FileRecord& file) {
      EXPECT_EQ(file.outputs.size(), 1);
      paths.push_back(file.path);
    }));
    return paths;
  }

  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
};

TEST_F(TotalsTest, CountFilesOfOneStatusWithOneReason) {
  EXPECT_TRUE(totalsOf(*state).empty());
  put("a", FileStatus::Converted, "");
  put("b", FileStatus::Failed, "empty");
  put("c", FileStatus::Converted, "");
  put("d", FileStatus::Converted, "doubtful");
  std::vector<Total> totals = totalsOf(*state);
  std::ranges::sort(totals, {}, &Total::reason);
  ASSERT_EQ(totals.size(), 3);
  EXPECT_EQ(totals[0].status, FileStatus::Converted);
  EXPECT_EQ(totals[0].files, 2);
  EXPECT_EQ(totals[0].size, 2000);
  EXPECT_EQ(totals[0].triangles, 24);
  EXPECT_EQ(totals[0].seconds, 1.0);
  EXPECT_EQ(totals[1].reason, "doubtful");
  EXPECT_EQ(totals[1].status, FileStatus::Converted);
  EXPECT_EQ(totals[2].status, FileStatus::Failed);
  EXPECT_EQ(totals[2].files, 1);
}

TEST_F(TotalsTest, ShowsFirstWhatNeedsAttention) {
  put("a", FileStatus::Converted, "");
  put("b", FileStatus::Failed, "empty");
  put("c", FileStatus::Converted, "");
  put("d", FileStatus::Converted, "doubtful");
  put("e", FileStatus::Delivering, "");
  EXPECT_THAT(shown(9), ElementsAre("a", "b", "c", "d", "e"));
  EXPECT_THAT(shown(4), ElementsAre("a", "b", "d", "e"));
  EXPECT_THAT(shown(2), ElementsAre("b", "d"));
}

}  // namespace
}  // namespace plenvorith
