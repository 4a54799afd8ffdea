#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace plenvorith {

/// One use of a prepared statement of SQLite. Values go in, and those of a row come out, from left
/// to right. Texts and bytes that go in are pointed at: they have to outlive the use.
class StatementUse {
 public:
  explicit StatementUse(sqlite3_stmt* statement) : statement_(statement) {}
  /// Makes the statement ready for its next use.
  ~StatementUse();
  StatementUse(const StatementUse&) = delete;
  StatementUse& operator=(const StatementUse&) = delete;

  void bind(std::int64_t value);
  void bind(double value);
  void bindText(std::string_view value);
  void bindBytes(std::string_view value);
  void bindNull();

  /// Goes to the next row; false if there is none, or if the statement fails.
  bool step();
  /// Goes past the last row; whether it got there without a failure.
  [[nodiscard]] bool finish();

  /// Whether the next value of the row is none.
  bool isNull() const;
  std::int64_t integer();
  double real();
  std::string bytes();  ///< of a text, too

 private:
  sqlite3_stmt* statement_;
  int bound_ = 0;
  int read_ = 0;
  int result_ = 0;
};

/// Runs statements that give nothing; false at the first that fails.
[[nodiscard]] bool executeStatements(sqlite3* database, const char* statements);

/// The only number that a query gives, or `otherwise` if it gives none.
int numberFrom(sqlite3* database, const char* query, int otherwise);

}  // namespace plenvorith
