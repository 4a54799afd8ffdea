#include "batch/state/state_columns.h"

#include <string>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "batch/state/statement.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;

/// A statement whose row is what was bound to it.
class StateColumnsTest : public testing::Test {
 protected:
  StateColumnsTest() {
    EXPECT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
  }
  ~StateColumnsTest() override {
    sqlite3_finalize(statement);
    sqlite3_close(database);
  }

  /// With `count` values from outside, and "77" behind them.
  sqlite3_stmt* prepare(int count) {
    std::string text = "SELECT ";
    for (int i = 0; i < count; ++i) {
      text += "?, ";
    }
    text += "77";
    EXPECT_EQ(sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr), SQLITE_OK);
    return statement;
  }

  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
};

TEST_F(StateColumnsTest, GiveBackEveryValueOfAFile) {
  FileRecord in;
  in.path = "/in/\xff\n";
  in.name = "n";
  in.run = 2;
  in.status = FileStatus::Delivering;
  in.reason = "r";
  in.lastLine = "l\xfe";
  in.exitStatus = 3;
  in.signal = 11;
  in.size = 4;
  in.mtime = 5;
  in.hash = std::string("\0h", 2);
  in.settings = "s";
  in.program = "p";
  in.triangles = 6;
  in.seconds = 0.25;
  in.cpuSeconds = 0.5;
  in.peakMemory = 7;
  in.bounds = Bounds{{1, 2, 3}, {4, 5, 6}};
  in.host = "h";
  in.changed = 8;
  in.inode = 9;
  in.header = {"schema\xff", "system", "stamp"};
  StatementUse use(prepare(29));
  bindFile(use, in);
  ASSERT_TRUE(use.step());
  const auto [out, id] = fileFrom(use);
  EXPECT_EQ(id, 77);
  EXPECT_EQ(out.path, "/in/\xff\n");
  EXPECT_EQ(out.name, "n");
  EXPECT_EQ(out.run, 2);
  EXPECT_EQ(out.status, FileStatus::Delivering);
  EXPECT_EQ(out.reason, "r");
  EXPECT_EQ(out.lastLine, "l\xfe");
  EXPECT_EQ(out.exitStatus, 3);
  EXPECT_EQ(out.signal, 11);
  EXPECT_EQ(out.size, 4);
  EXPECT_EQ(out.mtime, 5);
  EXPECT_EQ(out.hash, std::string("\0h", 2));
  EXPECT_EQ(out.settings, "s");
  EXPECT_EQ(out.program, "p");
  EXPECT_EQ(out.triangles, 6);
  EXPECT_EQ(out.seconds, 0.25);
  EXPECT_EQ(out.cpuSeconds, 0.5);
  EXPECT_EQ(out.peakMemory, 7);
  ASSERT_TRUE(out.bounds);
  EXPECT_THAT(out.bounds->low, ElementsAre(1, 2, 3));
  EXPECT_THAT(out.bounds->high, ElementsAre(4, 5, 6));
  EXPECT_EQ(out.host, "h");
  EXPECT_EQ(out.changed, 8);
  EXPECT_EQ(out.inode, 9);
  EXPECT_EQ(out.header.schema, "schema\xff");
  EXPECT_EQ(out.header.system, "system");
  EXPECT_EQ(out.header.timeStamp, "stamp");
}

TEST_F(StateColumnsTest, KeepWhatIsNotKnownApartFromZero) {
  FileRecord in;
  in.exitStatus = 0;
  StatementUse use(prepare(29));
  bindFile(use, in);
  ASSERT_TRUE(use.step());
  const FileRecord out = fileFrom(use).first;
  EXPECT_EQ(out.exitStatus, 0);
  EXPECT_FALSE(out.signal);
  EXPECT_FALSE(out.bounds);
  EXPECT_EQ(out.status, FileStatus::Failed);
}

TEST_F(StateColumnsTest, GiveBackEveryValueOfARun) {
  RunRecord in;
  in.id = 9;
  in.start = "2026-03-31T12:00:00Z";
  in.end = "2026-03-31T12:00:01Z";
  in.seconds = 1.5;
  in.result = "finished";
  in.arguments = {"-o", "", "a b\xff"};
  in.program = "p";
  in.host = "h";
  in.base = "/in/";
  in.leftOut = "1 file\n";
  const std::string arguments = argumentsText(in);
  EXPECT_EQ(arguments, std::string("-o\0\0a b\xff\0", 9));
  StatementUse use(prepare(10));
  bindRun(use, in, arguments);
  ASSERT_TRUE(use.step());
  const RunRecord out = runFrom(use);
  EXPECT_EQ(out.id, 9);
  EXPECT_EQ(out.start, "2026-03-31T12:00:00Z");
  EXPECT_EQ(out.end, "2026-03-31T12:00:01Z");
  EXPECT_EQ(out.seconds, 1.5);
  EXPECT_EQ(out.result, "finished");
  EXPECT_THAT(out.arguments, ElementsAre("-o", "", "a b\xff"));
  EXPECT_EQ(out.program, "p");
  EXPECT_EQ(out.host, "h");
  EXPECT_EQ(out.base, "/in/");
  EXPECT_EQ(out.leftOut, "1 file\n");
}

TEST_F(StateColumnsTest, LeaveTheNumberOfANewRunToTheState) {
  StatementUse use(prepare(10));
  bindRun(use, {}, "");
  ASSERT_TRUE(use.step());
  EXPECT_TRUE(use.isNull());
}

}  // namespace
}  // namespace plenvorith
