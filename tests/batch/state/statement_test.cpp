#include "batch/state/statement.h"

#include <string>

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace plenvorith {
namespace {

/// A database in memory, and a statement on it.
class StatementTest : public testing::Test {
 protected:
  StatementTest() {
    EXPECT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
    EXPECT_TRUE(executeStatements(database, "CREATE TABLE t (a, b, c, d, e)"));
  }
  ~StatementTest() override {
    sqlite3_finalize(statement);
    sqlite3_close(database);
  }

  sqlite3_stmt* prepare(const char* text) {
    sqlite3_finalize(statement);
    EXPECT_EQ(sqlite3_prepare_v2(database, text, -1, &statement, nullptr), SQLITE_OK);
    return statement;
  }

  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
};

TEST_F(StatementTest, GivesBackWhatWentIn) {
  const std::string bytes("\0\xff\n", 3);
  {
    StatementUse use(prepare("INSERT INTO t VALUES (?, ?, ?, ?, ?)"));
    use.bind(std::int64_t{1} << 40);
    use.bind(0.1);
    use.bindText("größe");
    use.bindBytes(bytes);
    use.bindNull();
    EXPECT_TRUE(use.finish());
  }
  StatementUse use(prepare("SELECT a, b, c, d, e FROM t"));
  ASSERT_TRUE(use.step());
  EXPECT_EQ(use.integer(), std::int64_t{1} << 40);
  EXPECT_EQ(use.real(), 0.1);
  EXPECT_EQ(use.bytes(), "größe");
  EXPECT_FALSE(use.isNull());
  EXPECT_EQ(use.bytes(), bytes);
  EXPECT_TRUE(use.isNull());
  EXPECT_FALSE(use.step());
  EXPECT_TRUE(use.finish());
}

TEST_F(StatementTest, TakesEmptyTextsAndBytesForValues) {
  {
    StatementUse use(prepare("INSERT INTO t (a, b) VALUES (?, ?)"));
    use.bindText({});
    use.bindBytes({});
    EXPECT_TRUE(use.finish());
  }
  EXPECT_EQ(numberFrom(database, "SELECT a IS NOT NULL AND b IS NOT NULL FROM t", -1), 1);
  EXPECT_EQ(numberFrom(database, "SELECT length(a) + length(b) FROM t", -1), 0);
}

TEST_F(StatementTest, ForgetsTheValuesOfTheLastUse) {
  sqlite3_stmt* const insert = prepare("INSERT INTO t (a, b) VALUES (?, ?)");
  {
    StatementUse use(insert);
    use.bind(std::int64_t{1});
    use.bind(std::int64_t{2});
    EXPECT_TRUE(use.finish());
  }
  {
    StatementUse use(insert);
    use.bind(std::int64_t{3});
    EXPECT_TRUE(use.finish());
  }
  EXPECT_EQ(numberFrom(database, "SELECT count(*) FROM t", -1), 2);
  EXPECT_EQ(numberFrom(database, "SELECT a FROM t WHERE b IS NULL", -1), 3);
}

TEST_F(StatementTest, StartsEachRowFromTheLeft) {
  ASSERT_TRUE(executeStatements(database, "INSERT INTO t (a, b) VALUES (1, 2), (3, 4)"));
  StatementUse use(prepare("SELECT a, b FROM t ORDER BY a"));
  ASSERT_TRUE(use.step());
  EXPECT_EQ(use.integer(), 1);
  ASSERT_TRUE(use.step());
  EXPECT_EQ(use.integer(), 3);
  EXPECT_EQ(use.integer(), 4);
}

TEST_F(StatementTest, TellsFailuresFromTheEnd) {
  ASSERT_TRUE(executeStatements(database, "CREATE UNIQUE INDEX i ON t (a)"));
  ASSERT_TRUE(executeStatements(database, "INSERT INTO t (a) VALUES (1)"));
  StatementUse use(prepare("INSERT INTO t (a) VALUES (?)"));
  use.bind(std::int64_t{1});
  EXPECT_FALSE(use.step());
  EXPECT_FALSE(use.finish());
}

TEST_F(StatementTest, RunsSeveralStatementsUpToTheFirstThatFails) {
  EXPECT_FALSE(executeStatements(database,
                                 "INSERT INTO t (a) VALUES (1); INSERT INTO u VALUES "
                                 "(1); INSERT INTO t (a) VALUES (2)"));
  EXPECT_EQ(numberFrom(database, "SELECT count(*) FROM t", -1), 1);
}

TEST_F(StatementTest, GivesTheOtherNumberWhereAQueryGivesNone) {
  EXPECT_EQ(numberFrom(database, "SELECT a FROM t", 7), 7);
  EXPECT_EQ(numberFrom(database, "SELECT a FROM u", 8), 8);
}

}  // namespace
}  // namespace plenvorith
