#include "batch/report/summary.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

Settled recordWith(FileStatus status, const std::string& path, const std::string& reason,
                   const std::string& lastLine) {
  FileRecord record;
  record.status = status;
  record.path = "/in" + path;
  record.name = path.substr(1);
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
            "  1 ends in the middle\n"
            "    b\n"
            "Failed: 1\n"
            "  1 disk full\n"
            "    c\\n: last\\x1b line\n"
            "Without a result: 2\n"
            "Not looked at: 2\n"
            "  folder cannot be read: /x\\n\n"
            "  1 cannot be read; what was converted before stays\n"
            "    d\n"
            "Skipped: 3 excluded: x, ...\n"
            "Skipped: 2 links to folders: a\\n, b/c\n"
            "Time: 61 s\n"
            "State and transcripts: /out/.plenvorith-batch\n");
}

std::string printed(const Summary& summary) {
  testing::internal::CaptureStdout();
  EXPECT_FALSE(printSummary(summary, FoundFiles(), 0, "/s"));
  const std::string text = testing::internal::GetCapturedStdout();
  return text.substr(text.find("Failed: "), text.find("Time: ") - text.find("Failed: "));
}

TEST(PrintSummary, CountsFailuresByKindAndTellsThemApart) {
  Summary summary;
  summary.files = 4;
  addToSummary(summary, recordWith(FileStatus::Failed, "/a", "empty", ""));
  addToSummary(summary, recordWith(FileStatus::Failed, "/b", "exit status 3", "no luck"));
  addToSummary(summary, recordWith(FileStatus::Failed, "/c", "exit status 4", ""));
  addToSummary(summary, recordWith(FileStatus::Failed, "/d", "exit status 4", ""));
  EXPECT_EQ(printed(summary),
            "Failed: 4\n"
            "  3 exit status\n"
            "    b: exit status 3 (no luck)\n"
            "    c: exit status 4\n"
            "    d: exit status 4\n"
            "  1 empty\n"
            "    a\n");
}

TEST(PrintSummary, GivesTwentyExamplesOfAnyNumberOfFailures) {
  Summary summary;
  summary.files = 3002;
  for (int i = 0; i < 3000; ++i) {
    const std::string reason = i < 1500 ? "empty" : "incomplete: " + std::to_string(i) + ".stl";
    addToSummary(summary, recordWith(FileStatus::Failed, "/x" + std::to_string(i), reason, ""));
  }
  addToSummary(summary, recordWith(FileStatus::Failed, "/y", "disk full", ""));
  addToSummary(summary, recordWith(FileStatus::Failed, "/z", "name too long", ""));
  const std::string text = printed(summary);
  const auto lines = std::ranges::count(text, '\n');
  const auto kinds = 4;
  EXPECT_LE(lines, 1 + kinds + 20) << text;
  EXPECT_GE(lines, 1 + kinds + 12) << text;
  EXPECT_NE(text.find("  1500 incomplete\n    x1500: incomplete: 1500.stl\n"), std::string::npos);
  EXPECT_NE(text.find("  1500 empty\n    x0\n"), std::string::npos);
  EXPECT_NE(text.find("  1 disk full\n    y\n  1 name too long\n    z\n"), std::string::npos);
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
