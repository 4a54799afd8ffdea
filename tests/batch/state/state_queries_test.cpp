#include "batch/state/state_queries.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "batch/state/statement.h"

namespace plenvorith {
namespace {

/// A database in memory with the tables of a state.
class StateQueriesTest : public testing::Test {
 protected:
  StateQueriesTest() {
    EXPECT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
    EXPECT_TRUE(executeStatements(database, kStateSchema));
  }
  ~StateQueriesTest() override {
    sqlite3_close(database);
  }

  sqlite3* database = nullptr;
};

TEST_F(StateQueriesTest, MakeTablesOfTheVersionThatTheProgramReads) {
  EXPECT_EQ(numberFrom(database, "PRAGMA user_version", -1), kStateVersion);
}

TEST_F(StateQueriesTest, LeaveTablesAloneThatAreThere) {
  ASSERT_TRUE(executeStatements(database,
                                "INSERT INTO run VALUES(7, '', '', 0, '', x'', '', '', x'', '')"));
  EXPECT_TRUE(executeStatements(database, kStateSchema));
  EXPECT_EQ(numberFrom(database, "SELECT id FROM run", -1), 7);
}

TEST_F(StateQueriesTest, ShowFilesToPeopleAsTexts) {
  ASSERT_TRUE(executeStatements(
      database,
      "INSERT INTO file(path, name, run, status, reason, last_line, size, mtime, hash, settings, "
      "program, triangles, seconds, cpu_seconds, peak_memory, host) VALUES("
      "x'2f61', x'61', 1, 'failed', '', x'', 0, 0, x'00ff', '', '', 0, 0, 0, 0, '')"));
  EXPECT_EQ(numberFrom(database, "SELECT path = '/a' AND hash = '00FF' FROM files", -1), 1);
}

}  // namespace
}  // namespace plenvorith
