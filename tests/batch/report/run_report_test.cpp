#include "batch/report/run_report.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "batch/system/folder.h"
#include "tests/batch/opened_state.h"
#include "tests/support/captured_cout.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::HasSubstr;

/// A state of one run and one file.
class RunReportTest : public testing::Test {
 protected:
  RunReportTest() {
    EXPECT_TRUE(makeFolders(places.state));
    state = test::openedState(places.database);
    putRun();
    FileRecord file;
    file.path = "/in/a.stp";
    file.name = "a.stp";
    file.reason = "empty";
    EXPECT_TRUE(putFile(*state, file));
  }

  void putRun() {
    RunRecord run;
    run.start = "2026-03-31T12:00:00Z";
    run.arguments = {"-o", "out", "new\nline"};
    run.program = "1.2.3 (Kernel 7)";
    run.host = "here";
    run.base = "/in/";
    run.leftOut = "2 links that lead nowhere: a, b\nfolder cannot be read: c\n";
    EXPECT_GT(plenvorith::putRun(*state, run), 0);
  }

  /// What is printed on both streams.
  bool report(std::string& output, std::string& errors) {
    const test::CapturedCout captured;
    testing::internal::CaptureStderr();
    const bool isWritten = reportState(options, *state, places);
    errors = testing::internal::GetCapturedStderr();
    output = captured.text();
    return isWritten;
  }

  const test::TempDir dir;
  const Places places = placesIn(dir / "out");
  const std::string page = places.output + "/index.html";
  Options options;
  State state;
};

TEST_F(RunReportTest, TellsOfTheFilesAndTheRun) {
  std::string output;
  std::string errors;
  EXPECT_TRUE(report(output, errors));
  EXPECT_EQ(output, "Report: " + page + '\n');
  EXPECT_EQ(errors, "");
  const std::string text = test::readFile(page);
  EXPECT_THAT(text, HasSubstr("\"name\":\"a.stp\",\"status\":\"failed\""));
  EXPECT_THAT(text, HasSubstr("\"notes\":[\"2 links that lead nowhere: a, b\","
                              "\"folder cannot be read: c\"]"));
  EXPECT_THAT(text, HasSubstr("Plenvorith 1.2.3 (Kernel 7), on here, 2026-03-31T12:00:00Z: "
                              "plenvorith-batch -o out new\\\\nline"));
}

TEST_F(RunReportTest, CountsTheRuns) {
  putRun();
  std::string output;
  std::string errors;
  EXPECT_TRUE(report(output, errors));
  EXPECT_THAT(test::readFile(page), HasSubstr("12:00:00Z, the last of 2 runs: plenvorith-batch"));
}

TEST_F(RunReportTest, ReplacesAReport) {
  std::string output;
  std::string errors;
  EXPECT_TRUE(report(output, errors));
  const std::string first = test::readFile(page);
  EXPECT_TRUE(report(output, errors));
  EXPECT_EQ(test::readFile(page), first);
}

TEST_F(RunReportTest, ReplacesAReportOfAnotherRelease) {
  test::writeFile(page,
                  "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                  "<title>Plenvorith report</title>\n<style>\nbody {}");
  std::string output;
  std::string errors;
  EXPECT_TRUE(report(output, errors));
  EXPECT_EQ(errors, "");
}

TEST_F(RunReportTest, LeavesAPageAloneThatIsNoReport) {
  test::writeFile(page, "<!doctype html>\n<html>mine");
  std::string output;
  std::string errors;
  EXPECT_FALSE(report(output, errors));
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors, "plenvorith-batch: no report, for this is not one: " + page + '\n');
  EXPECT_EQ(test::readFile(page), "<!doctype html>\n<html>mine");
}

TEST_F(RunReportTest, SaysThatMeshesCouldNotBeLookedAt) {
  options.checks = true;
  EXPECT_TRUE(makeFolders(places.state + "/inspections.db"));
  std::string output;
  std::string errors;
  EXPECT_FALSE(report(output, errors));
  EXPECT_THAT(errors, HasSubstr("inspections.db"));
  // The report is written all the same.
  EXPECT_THAT(test::readFile(page), HasSubstr("a.stp"));
}

}  // namespace
}  // namespace plenvorith
