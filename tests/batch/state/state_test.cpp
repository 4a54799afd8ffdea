#include "batch/state/state.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "batch/state/statement.h"
#include "tests/batch/opened_state.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FileRecord fileWithAllValues() {
  FileRecord file;
  file.path = "/in/new\nline \xff.stp";
  file.name = "new\nline \xff.stp";
  file.run = 3;
  file.status = FileStatus::Delivering;
  file.reason = "why";
  file.lastLine = "the \xfe line";
  file.exitStatus = 0;
  file.size = std::int64_t{1} << 40;
  file.mtime = 1234567890123456789;
  file.hash = std::string("\0\1\2", 3);
  file.settings = "stl 0.1";
  file.program = "0.1.0";
  file.triangles = 12;
  file.seconds = 0.25;
  file.cpuSeconds = 0.125;
  file.peakMemory = 4096;
  file.bounds = Bounds{{-1.5, 0, 1}, {2, 3, 1e300}};
  file.host = "here";
  file.changed = 8;
  file.inode = 9;
  file.header = {"schema\xff", "system", "stamp"};
  file.sameAs = "/in/same\xff.stp";
  file.outputs = {{"a\xff.stl", 684}, {"b.stl", 84}};
  return file;
}

std::vector<std::string> pathsOf(const std::vector<OutputRecord>& outputs) {
  std::vector<std::string> paths;
  paths.reserve(outputs.size());
  for (const OutputRecord& output : outputs) {
    paths.push_back(output.path);
  }
  return paths;
}

FileRecord fileNamed(const std::string& path) {
  FileRecord file;
  file.path = path;
  return file;
}

TEST(State, GivesBackAllValuesOfAFileAfterItIsOpenedAgain) {
  const test::TempDir dir;
  const FileRecord file = fileWithAllValues();
  FileRecord failed = fileNamed("/in/b");
  failed.signal = 11;
  {
    const State state = test::openedState(dir / "state.db");
    EXPECT_TRUE(putFile(*state, file));
    EXPECT_TRUE(putFile(*state, failed));
  }
  const State state = test::openedState(dir / "state.db");
  const auto found = findFile(*state, file.path);
  ASSERT_TRUE(found.has_value());
  EXPECT_TRUE(*found == file);
  const auto other = findFile(*state, "/in/b");
  ASSERT_TRUE(other.has_value());
  EXPECT_TRUE(*other == failed);
  EXPECT_EQ(findFile(*state, "/in/c").has_value(), false);
}

TEST(State, LeavesOneFileBesideTheDatabaseOnlyWhileItIsOpen) {
  const test::TempDir dir;
  { EXPECT_TRUE(putFile(*test::openedState(dir / "state.db"), fileNamed("/a"))); }
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, ElementsAre("state.db"));
}

TEST(State, ReplacesAFileAndItsOutputs) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  FileRecord file = fileWithAllValues();
  EXPECT_TRUE(putFile(*state, file));
  file.triangles = 7;
  file.bounds.reset();
  file.outputs = {{"c.stl", 1}};
  EXPECT_TRUE(putFile(*state, file));
  EXPECT_TRUE(findFile(*state, file.path) == file);
}

TEST(State, GivesAnOutputToTheLastThatWroteIt) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  FileRecord a = fileNamed("/a");
  a.outputs = {{"x.stl", 1}, {"y.stl", 1}};
  FileRecord b = fileNamed("/b");
  b.outputs = {{"x.stl", 2}};
  EXPECT_TRUE(putFile(*state, a));
  EXPECT_TRUE(putFile(*state, b));
  EXPECT_THAT(pathsOf(findFile(*state, "/a")->outputs), ElementsAre("y.stl"));
  EXPECT_THAT(pathsOf(findFile(*state, "/b")->outputs), ElementsAre("x.stl"));
}

TEST(State, VisitsFilesInTheOrderOfTheirBytes) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  for (const char* path : {"/b", "/a\xff", "/a", "/B"}) {
    FileRecord file = fileNamed(path);
    file.outputs = {{std::string(path) + ".stl", 1}};
    EXPECT_TRUE(putFile(*state, file));
  }
  std::vector<std::string> visited;
  EXPECT_TRUE(forEachFile(*state, [&](const FileRecord& file) {
    visited.push_back(file.path + ":" + file.outputs.at(0).path);
  }));
  EXPECT_THAT(visited, ElementsAre("/B:/B.stl", "/a:/a.stl", "/a\xff:/a\xff.stl", "/b:/b.stl"));
}

TEST(State, ForgetsAFile) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  const FileRecord file = fileWithAllValues();
  EXPECT_TRUE(putFile(*state, file));
  EXPECT_TRUE(removeFile(*state, file.path));
  EXPECT_TRUE(removeFile(*state, "/never there"));
  EXPECT_FALSE(findFile(*state, file.path).has_value());
  EXPECT_TRUE(putFile(*state, file));
  EXPECT_EQ(findFile(*state, file.path)->outputs.size(), 2U);
}

TEST(State, DropsAChangeThatIsNotCommitted) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  EXPECT_TRUE(beginChanges(*state));
  EXPECT_TRUE(putFile(*state, fileNamed("/a")));
  dropChanges(*state);
  EXPECT_FALSE(findFile(*state, "/a").has_value());
  EXPECT_TRUE(beginChanges(*state));
  EXPECT_TRUE(putFile(*state, fileNamed("/a")));
  EXPECT_TRUE(commitChanges(*state));
  EXPECT_TRUE(findFile(*state, "/a").has_value());
}

TEST(State, CanBeReadWhileItIsWritten) {
  const test::TempDir dir;
  const State writer = test::openedState(dir / "state.db");
  EXPECT_TRUE(putFile(*writer, fileNamed("/a")));
  EXPECT_TRUE(beginChanges(*writer));
  EXPECT_TRUE(putFile(*writer, fileNamed("/b")));
  const State reader = test::openedState(dir / "state.db");
  EXPECT_TRUE(findFile(*reader, "/a").has_value());
  EXPECT_FALSE(findFile(*reader, "/b").has_value());
}

// The tables and a record as release 1.0.0 wrote them.
constexpr const char* kVersion1 = R"(
CREATE TABLE run(
  id INTEGER PRIMARY KEY, start TEXT NOT NULL, "end" TEXT NOT NULL, seconds REAL NOT NULL,
  result TEXT NOT NULL, arguments BLOB NOT NULL, program TEXT NOT NULL, host TEXT NOT NULL,
  base BLOB NOT NULL);
CREATE TABLE file(
  id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, name BLOB NOT NULL, run INTEGER NOT NULL,
  status TEXT NOT NULL, reason TEXT NOT NULL, last_line BLOB NOT NULL, exit_status INTEGER,
  signal INTEGER, size INTEGER NOT NULL, mtime INTEGER NOT NULL, hash BLOB NOT NULL,
  settings TEXT NOT NULL, program TEXT NOT NULL, triangles INTEGER NOT NULL,
  seconds REAL NOT NULL, cpu_seconds REAL NOT NULL, peak_memory INTEGER NOT NULL,
  low_x REAL, low_y REAL, low_z REAL, high_x REAL, high_y REAL, high_z REAL,
  host TEXT NOT NULL, transcript BLOB NOT NULL);
CREATE TABLE output(
  path BLOB PRIMARY KEY, file INTEGER NOT NULL, size INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX output_file ON output(file);
CREATE VIEW files AS SELECT CAST(path AS TEXT) AS path, CAST(transcript AS TEXT) AS transcript
  FROM file;
INSERT INTO run VALUES(1, 'start', 'end', 2, 'finished', x'6100', '1.0.0', 'here', '/in/');
INSERT INTO file VALUES(1, CAST('/in/a.stp' AS BLOB), CAST('a.stp' AS BLOB), 1, 'converted', '', x'',
  0, NULL, 7, 9, x'00ff', 'stl 0.1', '1.0.0', 12, 0.5, 0.25, 4096, 0, 0, 0, 1, 1, 1, 'here',
  CAST('transcripts/a.stp.txt' AS BLOB));
INSERT INTO output VALUES(CAST('a.stp.stl' AS BLOB), 1, 684);
PRAGMA user_version = 1;
)";

TEST(State, BringsTheTablesOfAnEarlierReleaseUpToThisOne) {
  const test::TempDir dir;
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open((dir / "state.db").c_str(), &database), SQLITE_OK);
  ASSERT_TRUE(executeStatements(database, kVersion1));
  sqlite3_close(database);

  std::string problem;
  EXPECT_EQ(openState(dir / "state.db", problem, StateUse::Look), nullptr);
  EXPECT_THAT(problem, testing::HasSubstr("written by an earlier version of the program"));

  FileRecord expected;
  expected.path = "/in/a.stp";
  expected.name = "a.stp";
  expected.run = 1;
  expected.status = FileStatus::Converted;
  expected.exitStatus = 0;
  expected.size = 7;
  expected.mtime = 9;
  expected.hash = std::string("\0\xff", 2);
  expected.settings = "stl 0.1";
  expected.program = "1.0.0";
  expected.triangles = 12;
  expected.seconds = 0.5;
  expected.cpuSeconds = 0.25;
  expected.peakMemory = 4096;
  expected.bounds = Bounds{{0, 0, 0}, {1, 1, 1}};
  expected.host = "here";
  expected.outputs = {{"a.stp.stl", 684}};
  for (int round = 0; round < 2; ++round) {  // the second time there is nothing to do
    const State state = test::openedState(dir / "state.db");
    EXPECT_EQ(findFile(*state, "/in/a.stp"), expected);
    EXPECT_EQ(findTranscript(*state, "/in/a.stp"), std::nullopt);
    ASSERT_EQ(allRuns(*state).size(), 1U);
    EXPECT_EQ(allRuns(*state)[0].leftOut, "");
    EXPECT_TRUE(putFile(*state, expected));
  }
}

TEST(State, KeepsRuns) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db");
  RunRecord run;
  run.start = "2026-03-31T12:00:00Z";
  run.arguments = {"in \xff", "", "-o", "out"};
  run.program = "0.1.0";
  run.host = "here";
  run.base = "/in/";
  run.leftOut = "1 file\n";
  run.id = putRun(*state, run);
  EXPECT_EQ(run.id, 1);
  run.end = "2026-03-31T11:59:00Z";
  run.seconds = 60;
  run.result = "finished";
  EXPECT_EQ(putRun(*state, run), 1);
  EXPECT_EQ(putRun(*state, RunRecord()), 2);
  const std::vector<RunRecord> runs = allRuns(*state);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_TRUE(runs[0] == run);
  EXPECT_THAT(runs[1].arguments, IsEmpty());
}

TEST(State, RejectsAFileThatIsNone) {
  const test::TempDir dir;
  test::writeFile(dir / "state.db",
                  "This is no database, but it is longer than a header is.\n"
                  "It goes on for a while, and then it ends here. It is text.");
  std::string problem;
  EXPECT_EQ(openState(dir / "state.db", problem), nullptr);
  EXPECT_EQ(problem, dir / "state.db: file is not a database");
}

TEST(State, RejectsAFolderThatIsNotThere) {
  const test::TempDir dir;
  std::string problem;
  EXPECT_EQ(openState(dir / "missing/state.db", problem), nullptr);
  EXPECT_EQ(problem, dir / "missing/state.db: unable to open database file");
}

// A folder on a network may have no locks and no memory to share.
TEST(State, SharesNoMemoryWhereItIsAlone) {
  const test::TempDir dir;
  const State state = test::openedState(dir / "state.db", StateUse::Alone);
  EXPECT_TRUE(putFile(*state, fileNamed("/a")));
  EXPECT_TRUE(std::filesystem::exists(dir / "state.db-wal"));
  EXPECT_FALSE(std::filesystem::exists(dir / "state.db-shm"));
}

TEST(State, IsReadBesideAnEmptyLogAndNoOther) {
  const test::TempDir dir;
  { EXPECT_TRUE(putFile(*test::openedState(dir / "state.db"), fileNamed("/a"))); }
  test::writeFile(dir / "state.db-wal", "");
  State state = test::openedState(dir / "state.db", StateUse::Read);
  EXPECT_TRUE(findFile(*state, "/a").has_value());
  state.reset();
  test::writeFile(dir / "state.db-wal", "x");
  std::string problem;
  EXPECT_EQ(openState(dir / "state.db", problem, StateUse::Read), nullptr);
  EXPECT_EQ(problem, dir / "state.db: written by a run that was cut short; --merge puts it right");
}

TEST(State, TellsWhyChangesWereDropped) {
  const test::TempDir dir;
  test::openedState(dir / "state.db").reset();
  const State state = test::openedState(dir / "state.db", StateUse::Read);
  ASSERT_TRUE(beginChanges(*state));
  EXPECT_FALSE(putFile(*state, fileWithAllValues()));
  dropChanges(*state);
  EXPECT_EQ(stateProblem(*state), "attempt to write a readonly database");
}

}  // namespace
}  // namespace plenvorith
