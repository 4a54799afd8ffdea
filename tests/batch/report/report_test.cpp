#include "batch/report/report.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "batch/report/report_page.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using test::readFile;
using test::TempDir;
using testing::HasSubstr;
using testing::Not;

ReportFiles eachOf(const std::vector<ReportFile>& files) {
  return [&files](const std::function<void(const ReportFile&)>& visit) {
    for (const ReportFile& file : files) {
      visit(file);
    }
    return true;
  };
}

/// What stands between the start and the end of the data in the page of these files.
std::string dataOf(const ReportHead& head, const std::vector<ReportFile>& files) {
  const TempDir directory;
  EXPECT_TRUE(writeReport(directory / "index.html", head, eachOf(files)));
  const std::string page = readFile(directory / "index.html");
  const std::string_view start = "id=\"data\">\n";
  const std::size_t first = page.find(start) + start.size();
  return page.substr(first, page.find("</script>", first) - first);
}

TEST(Report, HoldsOneLineForEachFile) {
  ReportFile converted;
  converted.record.path = "/parts/sub/a.stp";
  converted.record.name = "sub/a.stp";
  converted.record.status = FileStatus::Converted;
  converted.record.size = 1234;
  converted.record.exitStatus = 0;
  converted.record.seconds = 0.25;
  converted.record.triangles = 548;
  converted.record.peakMemory = 60000000;
  converted.record.bounds = {{0, -1.5, 0}, {10, 1.5, 0.1}};
  converted.record.outputs = {{"sub/a.stp.stl", 27484}};
  ReportFile failed;
  failed.record.path = "/elsewhere/b.stp";
  failed.record.name = "b.stp";
  failed.record.reason = "kernel crashed (signal 11)";
  failed.transcriptEnd = "Reading: b.stp\nFailed";
  failed.record.signal = 11;
  failed.record.host = "alpha";
  const ReportHead head{"Plenvorith",
                        "/parts/",
                        {{FileStatus::Converted, "", 7, 1234, 548, 0.25},
                         {FileStatus::Converted, "doubtful", 1, 1, 12, 0.5},
                         {FileStatus::Failed, "kernel crashed (signal 11)", 1, 0, 0, 0.0}},
                        {"1 <other>"}};
  EXPECT_EQ(dataOf(head, {converted, failed}),
            "{\"about\":\"Plenvorith\",\"base\":\"/parts/\",\"notes\":[\"1 \\u003cother>\"],"
            "\"totals\":{"
            "\"converted\":{\"files\":8,\"size\":1235,\"triangles\":560,\"seconds\":0.75},"
            "\"failed\":{\"files\":1,\"size\":0,\"triangles\":0,\"seconds\":0.0},"
            "\"delivering\":{\"files\":0,\"size\":0,\"triangles\":0,\"seconds\":0.0}},"
            "\"kinds\":["
            "{\"title\":\"doubtful\",\"count\":1,\"reasons\":[[\"doubtful\",1]]},"
            "{\"title\":\"kernel crashed (signal 11)\",\"count\":1,"
            "\"reasons\":[[\"kernel crashed (signal 11)\",1]]}],\n"
            "\"files\":[\n"
            "{\"name\":\"sub/a.stp\",\"status\":\"converted\",\"size\":1234,\"seconds\":0.25,"
            "\"triangles\":548,\"peakMemory\":60000000,\"exitStatus\":0,"
            "\"bounds\":[0.0,-1.5,0.0,10.0,1.5,0.1],"
            "\"outputs\":[{\"path\":\"sub/a.stp.stl\",\"size\":27484}]},\n"
            "{\"name\":\"b.stp\",\"status\":\"failed\",\"size\":0,\"seconds\":0.0,"
            "\"triangles\":0,\"peakMemory\":0,\"path\":\"/elsewhere/b.stp\","
            "\"reason\":\"kernel crashed (signal 11)\",\"kind\":1,"
            "\"transcriptEnd\":[\"Reading: b.stp\",\"Failed\"],"
            "\"signal\":11,\"host\":\"alpha\"}\n]}\n");
}

TEST(Report, HoldsWhatWasFoundOutAboutTheOutputs) {
  ReportFile file;
  file.record.outputs = {{"a.stp.stl_1.stl", 84}, {"a.stp.stl_2.stl", 134}, {"a.stp.stl_3.stl", 1}};
  file.inspections = {
      {{{3, 1, 1, 2, 4, 0.25, 1.5, "lamp / foot\n"}}, "f"}, {{}, "fo"}, {{}, "foo"}};
  EXPECT_THAT(
      dataOf({}, {file}),
      HasSubstr("\"outputs\":["
                "{\"path\":\"a.stp.stl_1.stl\",\"size\":84,\"check\":{\"parts\":3,\"badParts\":1,"
                "\"openSolids\":1,\"facesWithoutMesh\":2,\"facesOver\":4,"
                "\"deviation\":0.25,\"volume\":1.5,\"names\":[\"lamp / foot\"]},"
                "\"picture\":\"Zg==\"},"
                "{\"path\":\"a.stp.stl_2.stl\",\"size\":134,\"picture\":\"Zm8=\"},"
                "{\"path\":\"a.stp.stl_3.stl\",\"size\":1,\"picture\":\"Zm9v\"}]"));
}

TEST(Report, CannotBeEndedByAName) {
  ReportFile file;
  file.record.name = "</script><script>alert(1)</script>.stp";
  EXPECT_THAT(dataOf({}, {file}),
              HasSubstr("\\u003c/script>\\u003cscript>alert(1)\\u003c/script>"));
}

TEST(Report, NeedsNoOtherFileAndHoldsEveryPartOfThePageOnce) {
  const TempDir directory;
  ASSERT_TRUE(writeReport(directory / "index.html", {}, eachOf({})));
  const std::string page = readFile(directory / "index.html");
  EXPECT_THAT(page, HasSubstr(std::string(kReportStyle)));
  EXPECT_THAT(page, HasSubstr(std::string(kReportScript)));
  EXPECT_THAT(page, testing::EndsWith("</html>\n"));
  for (const char* foreign :
       {"@STYLE@", "@DATA@", "@SCRIPT@", "http:", "https:", " src=\"", "@import", "url("}) {
    EXPECT_THAT(page, Not(HasSubstr(foreign)));
  }
}

TEST(Report, ReplacesTheOneBeforeOnlyWhenItIsWhole) {
  const TempDir directory;
  test::writeFile(directory / "index.html", "before");
  std::filesystem::create_directory(directory / "index.html.new");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(writeReport(directory / "index.html", {}, eachOf({})));
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "plenvorith-batch: the report could not be written: " + (directory / "index.html") + "\n");
  EXPECT_EQ(readFile(directory / "index.html"), "before");
}

TEST(Report, IsNotWrittenIfTheFilesCannotBeRead) {
  const TempDir directory;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(writeReport(directory / "index.html", {}, [](const auto&) { return false; }));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("could not be written"));
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

}  // namespace
}  // namespace plenvorith
