#include "batch/state/state_queries.h"

#include <string_view>

namespace plenvorith {

// Paths are bytes in no known encoding, so they are blobs; the view is for people. What readers of
// other versions must not misread raises user_version.
const char* const kStateSchema = R"(
BEGIN IMMEDIATE;
CREATE TABLE IF NOT EXISTS run(
  id INTEGER PRIMARY KEY, start TEXT NOT NULL, "end" TEXT NOT NULL, seconds REAL NOT NULL,
  result TEXT NOT NULL, arguments BLOB NOT NULL, program TEXT NOT NULL, host TEXT NOT NULL,
  base BLOB NOT NULL, left_out TEXT NOT NULL DEFAULT '');
CREATE TABLE IF NOT EXISTS file(
  id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, name BLOB NOT NULL, run INTEGER NOT NULL,
  status TEXT NOT NULL, reason TEXT NOT NULL, last_line BLOB NOT NULL, exit_status INTEGER,
  signal INTEGER, size INTEGER NOT NULL, mtime INTEGER NOT NULL,
  hash BLOB NOT NULL, settings TEXT NOT NULL, program TEXT NOT NULL, triangles INTEGER NOT NULL,
  seconds REAL NOT NULL, cpu_seconds REAL NOT NULL, peak_memory INTEGER NOT NULL,
  low_x REAL, low_y REAL, low_z REAL, high_x REAL, high_y REAL, high_z REAL,
  host TEXT NOT NULL, changed INTEGER NOT NULL DEFAULT -1, inode INTEGER NOT NULL DEFAULT -1,
  schema BLOB NOT NULL DEFAULT x'', system BLOB NOT NULL DEFAULT x'',
  time_stamp BLOB NOT NULL DEFAULT x'', same_as BLOB NOT NULL DEFAULT x'');
CREATE TABLE IF NOT EXISTS output(
  path BLOB PRIMARY KEY, file INTEGER NOT NULL, size INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS output_file ON output(file);
CREATE TABLE IF NOT EXISTS transcript(
  file INTEGER PRIMARY KEY, size INTEGER NOT NULL, packed BLOB NOT NULL);
CREATE VIEW IF NOT EXISTS files AS
  SELECT CAST(path AS TEXT) AS path, CAST(name AS TEXT) AS name, run, status, reason,
         CAST(last_line AS TEXT) AS last_line, exit_status, signal, size, mtime,
         hex(hash) AS hash, settings, program, triangles, seconds, cpu_seconds, peak_memory,
         low_x, low_y, low_z, high_x, high_y, high_z, host,
         CAST(schema AS TEXT) AS schema, CAST(system AS TEXT) AS system,
         CAST(time_stamp AS TEXT) AS time_stamp, CAST(same_as AS TEXT) AS same_as
  FROM file;
PRAGMA user_version = 2;
COMMIT;
)";

const char* const kUpgradeOfVersion1 = R"(
BEGIN IMMEDIATE;
DROP VIEW files;
ALTER TABLE file DROP COLUMN transcript;
ALTER TABLE file ADD COLUMN changed INTEGER NOT NULL DEFAULT -1;
ALTER TABLE file ADD COLUMN inode INTEGER NOT NULL DEFAULT -1;
ALTER TABLE file ADD COLUMN schema BLOB NOT NULL DEFAULT x'';
ALTER TABLE file ADD COLUMN system BLOB NOT NULL DEFAULT x'';
ALTER TABLE file ADD COLUMN time_stamp BLOB NOT NULL DEFAULT x'';
ALTER TABLE file ADD COLUMN same_as BLOB NOT NULL DEFAULT x'';
ALTER TABLE run ADD COLUMN left_out TEXT NOT NULL DEFAULT '';
COMMIT;
)";

namespace {

/// The columns of a file but for its id, in the order that the header tells.
constexpr std::array<std::string_view, 30> kFileColumns = {
    "path",        "name",      "run",     "status",      "reason",      "last_line",
    "exit_status", "signal",    "size",    "mtime",       "hash",        "settings",
    "program",     "triangles", "seconds", "cpu_seconds", "peak_memory", "low_x",
    "low_y",       "low_z",     "high_x",  "high_y",      "high_z",      "host",
    "changed",     "inode",     "schema",  "system",      "time_stamp",  "same_as",
};

/// The columns with commas between them, each made a text by `write`.
template <typename Write>
std::string listOfColumns(Write write) {
  std::string list;
  for (const std::string_view column : kFileColumns) {
    list.append(list.empty() ? "" : ", ").append(write(std::string(column)));
  }
  return list;
}

}  // namespace

std::array<std::string, kQueryCount> allQueries() {
  const std::string columns = listOfColumns([](const std::string& column) { return column; });
  const std::string places = listOfColumns([](const std::string&) { return "?"; });
  const std::string updates =
      listOfColumns([](const std::string& column) { return column + " = excluded." + column; });
  return {
      "INSERT OR REPLACE INTO run VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING id",
      "INSERT INTO file(" + columns + ") VALUES(" + places + ") ON CONFLICT(path) DO UPDATE SET " +
          updates + " RETURNING id",
      "DELETE FROM output WHERE file = ?",
      "INSERT OR REPLACE INTO output VALUES(?, ?, ?)",
      "DELETE FROM file WHERE id = ?",
      "SELECT id FROM file WHERE path = ?",
      "SELECT " + columns + ", id FROM file WHERE path = ?",
      "SELECT " + columns + ", id FROM file ORDER BY path",
      "SELECT path, size FROM output WHERE file = ? ORDER BY path",
      "SELECT * FROM run ORDER BY id",
      "SELECT " + columns +
          ", id FROM file WHERE id IN (SELECT id FROM file "
          "ORDER BY status = 'converted' AND reason = '', path LIMIT ?) ORDER BY path",
      "SELECT status, reason, count(*), sum(size), sum(triangles), sum(seconds) FROM file "
      "GROUP BY status, reason",
      "INSERT OR REPLACE INTO transcript VALUES(?, ?, ?)",
      "SELECT size, packed FROM transcript WHERE file = ?",
      "DELETE FROM transcript WHERE file = ?",
      "SELECT path FROM file WHERE id = (SELECT file FROM output WHERE path = ?)",
  };
}

}  // namespace plenvorith
