#include "batch/report/export.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "batch/report/inspection.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

/// A state of two files.
State filledState(const test::TempDir& dir) {
  State state = test::openedState(dir / "state.db");
  FileRecord a;
  a.path = "/in/a, \"b\"\n\xff.stp";
  a.status = FileStatus::Converted;
  a.exitStatus = 0;
  a.triangles = 12;
  a.seconds = 0.5;
  a.size = 7;
  a.bounds = Bounds{{0, 0.5, 1}, {2, 3, 4}};
  a.outputs = {{"a.stl", 684}, {"\xff.stl", 1}};
  a.name = "a.stp";
  a.mtime = 9;
  a.hash = std::string("\0\xff", 2);
  a.run = 3;
  a.header = {"AP242", "CAD \xfe", "2026-03-31"};
  FileRecord b;
  b.path = "/in/b.stp";
  b.reason = "kernel crashed (signal 11, SIGSEGV)";
  b.signal = 11;
  EXPECT_TRUE(putFile(*state, a) && putFile(*state, b));
  return state;
}

TEST(ExportState, WritesATable) {
  const test::TempDir dir;
  ASSERT_TRUE(exportState(*filledState(dir), dir / "log.csv"));
  EXPECT_EQ(test::readFile(dir / "log.csv"),
            "status,input,reason,last_line,exit_status,signal,triangles,seconds,cpu_seconds,"
            "peak_memory,size,low_x,low_y,low_z,high_x,high_y,high_z,host,program,settings,"
            "name,mtime,hash,run,schema,system,time_stamp,same_as,parts,volume,"
            "parts_with_problems,open_solids,faces_without_mesh,faces_over,deviation,problems,"
            "outputs\n"
            "converted,\"/in/a, \"\"b\"\"\\n\\xff.stp\",,,0,,12,0.5,0.0,0,7,0.0,0.5,1.0,2.0,3.0,"
            "4.0,,,,a.stp,9,00ff,3,AP242,CAD \\xfe,2026-03-31,,,,,,,,,,2\n"
            "failed,/in/b.stp,\"kernel crashed (signal 11, SIGSEGV)\",,,11,0,0.0,0.0,0,0,,,,,,,"
            ",,,,0,,0,,,,,,,,,,,,,0\n");
}

TEST(ExportState, WritesObjects) {
  const test::TempDir dir;
  ASSERT_TRUE(exportState(*filledState(dir), dir / "log.json"));
  const std::string text = test::readFile(dir / "log.json");
  EXPECT_THAT(text, testing::StartsWith("[\n{\"status\":\"converted\",\"input\":"
                                        "\"/in/a, \\\"b\\\"\\\\n\\\\xff.stp\",\"reason\":\"\","));
  EXPECT_THAT(text, testing::HasSubstr("\"low_y\":0.5,"));
  EXPECT_THAT(text, testing::HasSubstr("\"outputs\":[{\"path\":\"a.stl\",\"size\":684},"
                                       "{\"path\":\"\\\\xff.stl\",\"size\":1}]},\n{\"status\":"));
  EXPECT_THAT(text, testing::EndsWith("\"outputs\":[]}\n]\n"));
}

TEST(ExportState, TellsWhatWasFoundOut) {
  const test::TempDir dir;
  std::string problem;
  const Inspections inspections = openInspections(dir / "inspections.db", problem);
  ASSERT_TRUE(prepareInspection(*inspections, "a.stl", 684, 1));
  ASSERT_TRUE(
      keepCheck(*inspections, "a.stl", MeshCheck{9, 1, 2, 3, 4, 0.5, 6.0, "lamp / foot\n"}));
  ASSERT_TRUE(exportState(*filledState(dir), dir / "log.json", inspections.get()));
  const std::string text = test::readFile(dir / "log.json");
  EXPECT_THAT(text, testing::HasSubstr(
                        "\"parts\":9,\"volume\":6.0,\"parts_with_problems\":1,\"open_solids\":2,"
                        "\"faces_without_mesh\":3,"
                        "\"faces_over\":4,\"deviation\":0.5,\"problems\":\"lamp / foot\\\\n\","
                        "\"outputs\":[{\"path\":\"a.stl\""));
  EXPECT_THAT(text, testing::HasSubstr("\"open_solids\":null,"));
}

TEST(ExportState, SaysWhereItCannotWrite) {
  const test::TempDir dir;
  EXPECT_FALSE(exportState(*filledState(dir), dir / "missing/log.csv"));
  // What stood there is still there.
  std::filesystem::create_directory(dir / "log.csv.new");
  test::writeFile(dir / "log.csv", "before");
  EXPECT_FALSE(exportState(*filledState(dir), dir / "log.csv"));
  EXPECT_EQ(test::readFile(dir / "log.csv"), "before");
}

}  // namespace
}  // namespace plenvorith
