#include "batch/report/summary.h"

#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

Settled recordWith(FileStatus status, const std::string& path, const std::string& reason,
                   const std::string& lastLine) {
  FileRecord record;
  record.status = status;
  record.path = path;
  record.reason = reason;
  record.lastLine = lastLine;
  record.triangles = status == FileStatus::Converted ? 12 : 0;
  return {.record = record, .obstacle = {}};
}

TEST(PrintSummary, TellsAllThatIsNotAsItShouldBe) {
  Summary summary;
  summary.files = 6;
  summary.convertedBefore = 7;
  addToSummary(summary, recordWith(FileStatus::Converted, "/a", "", ""));
  addToSummary(summary, recordWith(FileStatus::Converted, "/b", "ends in the middle", ""));
  addToSummary(summary, recordWith(FileStatus::Failed, "/c\n", "disk full", "last\x1b line"));
  Settled kept = recordWith(FileStatus::Converted, "/d", "", "");
  kept.isKept = true;
  kept.obstacle = "cannot be read";
  addToSummary(summary, kept);
  FoundFiles found;
  found.problems = {"folder cannot be read: /x\n"};
  found.skipped = {{"links to folders", {2, {"a\n", "b/c"}}}, {"excluded", {3, {"x"}}}};
  testing::internal::CaptureStdout();
  EXPECT_FALSE(printSummary(summary, found, 61.4, "/out/.plenvorith-batch"));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Converted: 2 (24 triangles)\n"
            "Converted before: 7\n"
            "Converted, but doubtful: 1\n"
            "  /b: ends in the middle\n"
            "Failed: 1\n"
            "  /c\\n: disk full (last\\x1b line)\n"
            "Without a result: 2\n"
            "Not looked at: 2\n"
            "  folder cannot be read: /x\\n\n"
            "  /d: cannot be read; what was converted before stays\n"
            "Skipped: 3 excluded: x, ...\n"
            "Skipped: 2 links to folders: a\\n, b/c\n"
            "Time: 61 s\n"
            "State and transcripts: /out/.plenvorith-batch\n");
}

TEST(PrintSummary, SaysLittleWhereAllIsWell) {
  Summary summary;
  summary.files = 1;
  addToSummary(summary, recordWith(FileStatus::Converted, "/a", "", ""));
  testing::internal::CaptureStdout();
  EXPECT_TRUE(printSummary(summary, FoundFiles(), 0.4, "/s"));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Converted: 1 (12 triangles)\nFailed: 0\nTime: 0 s\nState and transcripts: /s\n");
}

}  // namespace
}  // namespace plenvorith
