#include "batch/report/inspection.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include <nlohmann/json.hpp>
#include <sqlite3.h>

#include "batch/state/statement.h"
#include "batch/system/lines.h"

namespace plenvorith {
namespace {

/// The first table is that of the first release, which knew of less.
constexpr const char* kSchema = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
DROP TABLE IF EXISTS mesh;
CREATE TABLE IF NOT EXISTS stl(
  path BLOB PRIMARY KEY, size INTEGER NOT NULL, mtime INTEGER NOT NULL,
  checked INTEGER NOT NULL DEFAULT 0, parts INTEGER, bad_parts INTEGER, open_solids INTEGER,
  faces_without_mesh INTEGER, faces_over INTEGER, deviation REAL, volume REAL, names BLOB,
  pictured INTEGER NOT NULL DEFAULT 0, picture BLOB NOT NULL DEFAULT x'') WITHOUT ROWID;
)";

enum Query { Find, FindFile, Renew, PutCheck, PutPicture, Count };
constexpr std::array<const char*, Count> kQueries = {
    "SELECT parts, bad_parts, open_solids, faces_without_mesh, faces_over, deviation, volume, "
    "names, "
    "picture FROM stl WHERE path = ?",
    "SELECT checked, pictured FROM stl WHERE path = ? AND size = ? AND mtime = ?",
    "INSERT OR REPLACE INTO stl(path, size, mtime) VALUES(?, ?, ?)",
    "UPDATE stl SET checked = 1, parts = ?, bad_parts = ?, open_solids = ?, faces_without_mesh = "
    "?, "
    "faces_over = ?, deviation = ?, volume = ?, names = ? WHERE path = ?",
    "UPDATE stl SET pictured = 1, picture = ? WHERE path = ?",
};

using Json = nlohmann::json;

/// Sets a number that an object has to have; false if it has none.
template <typename Number>
bool takeNumber(const Json& object, const char* key, Number& number) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number()) {
    return false;
  }
  number = found->get<Number>();
  return true;
}

std::string textOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : std::string();
}

/// What a part is called, from the root down.
std::string nameOf(const Json& part) {
  std::string name;
  if (const auto path = part.find("path"); path != part.end() && path->is_array()) {
    for (const Json& step : *path) {
      name += (name.empty() ? "" : " / ") + textOf(step);
    }
  }
  const std::string own = textOf(part.value("name", Json()));
  return own.empty() || name.empty() ? name + own : name + " / " + own;
}

}  // namespace

struct InspectionsHandle {
  sqlite3* database = nullptr;
  std::array<sqlite3_stmt*, Count> statements{};
};

std::optional<MeshCheck> checkFrom(std::string_view printed) {
  constexpr int kMostNames = 20;
  MeshCheck check;
  int names = 0;
  bool isWhole = false;
  while (!printed.empty()) {
    const std::string_view line = cutOff(printed, '\n');
    constexpr bool kThrows = false;
    const Json object = line.starts_with('{') ? Json::parse(line, nullptr, kThrows) : Json();
    if (!object.is_object()) {
      continue;
    }
    if (!object.contains("parts")) {
      if (++names <= kMostNames) {
        check.names += nameOf(object) + '\n';
      }
      continue;
    }
    // The line of the file is the last one.
    isWhole = takeNumber(object, "parts", check.parts) &&
              takeNumber(object, "partsWithProblems", check.badParts) &&
              takeNumber(object, "openSolids", check.openSolids) &&
              takeNumber(object, "facesWithoutMesh", check.facesWithoutMesh) &&
              takeNumber(object, "facesOverDeflection", check.facesOver) &&
              takeNumber(object, "deviation", check.deviation) &&
              takeNumber(object, "volume", check.volume);
  }
  return isWhole ? std::optional(check) : std::nullopt;
}

void CloseInspections::operator()(InspectionsHandle* inspections) const {
  for (sqlite3_stmt* const statement : inspections->statements) {
    sqlite3_finalize(statement);
  }
  sqlite3_close(inspections->database);
  delete inspections;
}

Inspections openInspections(const std::string& path, std::string& problem) {
  // Only who owns the output folder gets here: locks would say nothing new, and a disk may have none.
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  Inspections inspections(new InspectionsHandle);
  bool isOpen =
      sqlite3_open_v2(path.c_str(), &inspections->database, kFlags, "unix-none") == SQLITE_OK &&
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
    MeshCheck check;
    for (std::int64_t* const number : {&check.parts, &check.badParts, &check.openSolids,
                                       &check.facesWithoutMesh, &check.facesOver}) {
      *number = find.integer();
    }
    check.deviation = find.real();
    check.volume = find.real();
    check.names = find.bytes();
    if (isChecked) {
      inspection.check = check;
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
    for (const std::int64_t number : {check->parts, check->badParts, check->openSolids,
                                      check->facesWithoutMesh, check->facesOver}) {
      put.bind(number);
    }
    put.bind(check->deviation);
    put.bind(check->volume);
    put.bindBytes(check->names);
  } else {
    constexpr int kColumns = 8;
    for (int i = 0; i < kColumns; ++i) {
      put.bindNull();
    }
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
