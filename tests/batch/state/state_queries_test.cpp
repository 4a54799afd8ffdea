#include "batch/state/state_queries.h"

#include <array>
#include <string>

#include <gmock/gmock.h>
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

  /// The number of values that go into a query and of those that a row of it has.
  std::array<int, 2> valuesOf(Query query) {
    sqlite3_stmt* statement = nullptr;
    const std::string text = allQueries().at(static_cast<std::size_t>(query));
    EXPECT_EQ(sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr), SQLITE_OK)
        << text << ": " << sqlite3_errmsg(database);
    const std::array<int, 2> values = {sqlite3_bind_parameter_count(statement),
                                       sqlite3_column_count(statement)};
    sqlite3_finalize(statement);
    return values;
  }

  sqlite3* database = nullptr;
};

using Values = std::array<int, 2>;

TEST_F(StateQueriesTest, TakeAndGiveTheValuesOfTheRecords) {
  EXPECT_EQ(valuesOf(Query::PutRun), (Values{10, 1}));
  EXPECT_EQ(valuesOf(Query::PutFile), (Values{29, 1}));
  EXPECT_EQ(valuesOf(Query::DropOutputs), (Values{1, 0}));
  EXPECT_EQ(valuesOf(Query::PutOutput), (Values{3, 0}));
  EXPECT_EQ(valuesOf(Query::RemoveFile), (Values{1, 0}));
  EXPECT_EQ(valuesOf(Query::FindId), (Values{1, 1}));
  EXPECT_EQ(valuesOf(Query::FindFile), (Values{1, 30}));
  EXPECT_EQ(valuesOf(Query::AllFiles), (Values{0, 30}));
  EXPECT_EQ(valuesOf(Query::FindOutputs), (Values{1, 2}));
  EXPECT_EQ(valuesOf(Query::AllRuns), (Values{0, 10}));
}

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
