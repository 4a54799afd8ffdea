#include "batch/state/statement.h"

#include <cstddef>

#include <sqlite3.h>

namespace plenvorith {

StatementUse::~StatementUse() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

void StatementUse::bind(std::int64_t value) {
  sqlite3_bind_int64(statement_, ++bound_, value);
}

void StatementUse::bind(double value) {
  sqlite3_bind_double(statement_, ++bound_, value);
}

// A null pointer would be taken for NULL.
void StatementUse::bindText(std::string_view value) {
  sqlite3_bind_text64(statement_, ++bound_, value.empty() ? "" : value.data(), value.size(),
                      SQLITE_STATIC, SQLITE_UTF8);
}

void StatementUse::bindBytes(std::string_view value) {
  sqlite3_bind_blob64(statement_, ++bound_, value.empty() ? "" : value.data(), value.size(),
                      SQLITE_STATIC);
}

void StatementUse::bindNull() {
  sqlite3_bind_null(statement_, ++bound_);
}

bool StatementUse::step() {
  read_ = 0;
  result_ = sqlite3_step(statement_);
  return result_ == SQLITE_ROW;
}

bool StatementUse::finish() {
  while (result_ == SQLITE_ROW || result_ == SQLITE_OK) {
    (void)step();
  }
  return result_ == SQLITE_DONE;
}

bool StatementUse::isNull() const {
  return sqlite3_column_type(statement_, read_) == SQLITE_NULL;
}

std::int64_t StatementUse::integer() {
  return sqlite3_column_int64(statement_, read_++);
}

double StatementUse::real() {
  return sqlite3_column_double(statement_, read_++);
}

std::string StatementUse::bytes() {
  const void* const data = sqlite3_column_blob(statement_, read_);
  const int size = sqlite3_column_bytes(statement_, read_++);
  if (data == nullptr) {
    return {};
  }
  return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
}

bool executeStatements(sqlite3* database, const char* statements) {
  return sqlite3_exec(database, statements, nullptr, nullptr, nullptr) == SQLITE_OK;
}

int numberFrom(sqlite3* database, const char* query, int otherwise) {
  sqlite3_stmt* statement = nullptr;
  int number = otherwise;
  if (sqlite3_prepare_v2(database, query, -1, &statement, nullptr) == SQLITE_OK) {
    StatementUse use(statement);
    number = use.step() ? static_cast<int>(use.integer()) : otherwise;
  }
  sqlite3_finalize(statement);
  return number;
}

}  // namespace plenvorith
