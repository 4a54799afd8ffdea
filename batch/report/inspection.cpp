#include "batch/report/inspection.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

#include <sqlite3.h>

#include "batch/state/statement.h"

namespace plenvorith {
namespace {

constexpr const char* kSchema = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS mesh(
  path BLOB PRIMARY KEY, size INTEGER NOT NULL, mtime INTEGER NOT NULL,
  checked INTEGER NOT NULL DEFAULT 0, open_edges INTEGER, volume REAL,
  pictured INTEGER NOT NULL DEFAULT 0, picture BLOB NOT NULL DEFAULT x'') WITHOUT ROWID;
)";

enum Query { Find, FindFile, Renew, PutCheck, PutPicture, Count };
constexpr std::array<const char*, Count> kQueries = {
    "SELECT open_edges, volume, picture FROM mesh WHERE path = ?",
    "SELECT checked, pictured FROM mesh WHERE path = ? AND size = ? AND mtime = ?",
    "INSERT OR REPLACE INTO mesh(path, size, mtime) VALUES(?, ?, ?)",
    "UPDATE mesh SET checked = 1, open_edges = ?, volume = ? WHERE path = ?",
    "UPDATE mesh SET pictured = 1, picture = ? WHERE path = ?",
};

/// The number behind the last `label`, blanks and a colon.
template <typename Number>
std::optional<Number> numberBehind(std::string_view label, std::string_view text) {
  const std::size_t place = text.rfind(label);
  if (place == std::string_view::npos) {
    return std::nullopt;
  }
  text.remove_prefix(place + label.size());
  text.remove_prefix(std::min(text.find_first_not_of(" :"), text.size()));
  Number number{};
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
    return std::nullopt;
  }
  return number;
}

}  // namespace

struct InspectionsHandle {
  sqlite3* database = nullptr;
  std::array<sqlite3_stmt*, Count> statements{};
};

std::optional<MeshCheck> checkFrom(std::string_view printed) {
  MeshCheck check;
  const char* const labels[] = {"Facets with 1 disconnected edge ",
                                "Facets with 2 disconnected edges",
                                "Facets with 3 disconnected edges"};
  for (int edges = 1; edges <= 3; ++edges) {
    const auto facets = numberBehind<std::int64_t>(labels[edges - 1], printed);
    if (!facets) {
      return std::nullopt;
    }
    check.openEdges += edges * *facets;
  }
  const auto volume = numberBehind<double>("Volume ", printed);
  if (!volume) {
    return std::nullopt;
  }
  check.volume = *volume;
  return check;
}

void CloseInspections::operator()(InspectionsHandle* inspections) const {
  for (sqlite3_stmt* const statement : inspections->statements) {
    sqlite3_finalize(statement);
  }
  sqlite3_close(inspections->database);
  delete inspections;
}

Inspections openInspections(const std::string& path, std::string& problem) {
  Inspections inspections(new InspectionsHandle);
  bool isOpen = sqlite3_open(path.c_str(), &inspections->database) == SQLITE_OK &&
                executeStatements(inspections->database, kSchema);
  for (std::size_t i = 0; isOpen && i < kQueries.size(); ++i) {
    isOpen = sqlite3_prepare_v2(inspections->database, kQueries[i], -1, &inspections->statements[i],
                                nullptr) == SQLITE_OK;
  }
  if (!isOpen) {
    problem = path + ": " + sqlite3_errmsg(inspections->database);
    return nullptr;
  }
  return inspections;
}

Inspection findInspection(InspectionsHandle& inspections, const std::string& path) {
  Inspection inspection;
  StatementUse find(inspections.statements[Find]);
  find.bindBytes(path);
  if (find.step()) {
    const bool isChecked = !find.isNull();
    const std::int64_t openEdges = find.integer();
    const double volume = find.real();
    if (isChecked) {
      inspection.check = {openEdges, volume};
    }
    inspection.picture = find.bytes();
  }
  return inspection;
}

std::optional<Uninspected> prepareInspection(InspectionsHandle& inspections,
                                             const std::string& path, std::int64_t size,
                                             std::int64_t mtime) {
  {
    StatementUse find(inspections.statements[FindFile]);
    find.bindBytes(path);
    find.bind(size);
    find.bind(mtime);
    if (find.step()) {
      const bool isChecked = find.integer() != 0;
      const bool isPictured = find.integer() != 0;
      return Uninspected{!isChecked, !isPictured};
    }
  }
  StatementUse renew(inspections.statements[Renew]);
  renew.bindBytes(path);
  renew.bind(size);
  renew.bind(mtime);
  return renew.finish() ? std::optional(Uninspected()) : std::nullopt;
}

bool keepCheck(InspectionsHandle& inspections, const std::string& path,
               const std::optional<MeshCheck>& check) {
  StatementUse put(inspections.statements[PutCheck]);
  if (check) {
    put.bind(check->openEdges);
    put.bind(check->volume);
  } else {
    put.bindNull();
    put.bindNull();
  }
  put.bindBytes(path);
  return put.finish();
}

bool keepPicture(InspectionsHandle& inspections, const std::string& path,
                 const std::string& picture) {
  StatementUse put(inspections.statements[PutPicture]);
  put.bindBytes(picture);
  put.bindBytes(path);
  return put.finish();
}

bool beginKeeping(InspectionsHandle& inspections) {
  return executeStatements(inspections.database, "BEGIN");
}

bool endKeeping(InspectionsHandle& inspections) {
  return executeStatements(inspections.database, "COMMIT");
}

}  // namespace plenvorith
