#include "batch/state/state.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include <sqlite3.h>
#include <sys/stat.h>
#include <zlib.h>

#include "batch/state/state_columns.h"
#include "batch/state/state_queries.h"
#include "batch/state/statement.h"
#include "batch/state/totals.h"

namespace plenvorith {

struct StateHandle {
  sqlite3* database = nullptr;
  std::array<sqlite3_stmt*, kQueryCount> statements{};
  std::string dropped;  ///< why changes were, the last time
};

namespace {

sqlite3_stmt* statementOf(StateHandle& state, Query query) {
  return state.statements[static_cast<std::size_t>(query)];
}

bool prepareStatements(StateHandle& state) {
  const std::array<std::string, kQueryCount> queries = allQueries();
  for (std::size_t i = 0; i < queries.size(); ++i) {
    if (sqlite3_prepare_v3(state.database, queries[i].c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                           &state.statements[i], nullptr) != SQLITE_OK) {
      return false;
    }
  }
  return true;
}

// A commit that is not waited for on the disk is lost in a power cut, but never half of it. The log
// of changes is kept short, for small disks.
constexpr const char* kSetup = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
PRAGMA wal_autocheckpoint = 250;
PRAGMA journal_size_limit = 0;
)";

/// A path as the address of a database that nobody changes.
std::string unchangingAddress(const std::string& path) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string address = "file:";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      const auto byte = static_cast<unsigned char>(c);
      address += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    } else {
      address += c;
    }
  }
  return address + "?immutable=1";
}

/// Whether there are changes that were not taken into the database yet.
bool hasLog(const std::string& path) {
  struct stat status {};
  return stat((path + "-wal").c_str(), &status) == 0 && status.st_size > 0;
}

int openDatabase(const std::string& path, StateUse use, sqlite3** database) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  switch (use) {
    case StateUse::Write:
      return sqlite3_open_v2(path.c_str(), database, kFlags, nullptr);
    case StateUse::Look:
      if (hasLog(path)) {
        return sqlite3_open_v2(path.c_str(), database, SQLITE_OPEN_READONLY, nullptr);
      }
      [[fallthrough]];
    case StateUse::Read:
      return sqlite3_open_v2(unchangingAddress(path).c_str(), database,
                             SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    case StateUse::Alone:
      break;
  }
  // Without locks there is no memory to share with others, which the log would need.
  const int result = sqlite3_open_v2(path.c_str(), database, kFlags, "unix-none");
  return result == SQLITE_OK && !executeStatements(*database, "PRAGMA locking_mode = EXCLUSIVE")
             ? SQLITE_ERROR
             : result;
}

std::vector<OutputRecord> outputsOf(StateHandle& state, std::int64_t id) {
  std::vector<OutputRecord> outputs;
  StatementUse use(statementOf(state, Query::FindOutputs));
  use.bind(id);
  while (use.step()) {
    std::string path = use.bytes();
    outputs.push_back({std::move(path), use.integer()});
  }
  return outputs;
}

bool putOutputs(StateHandle& state, std::int64_t id, const std::vector<OutputRecord>& outputs) {
  StatementUse drop(statementOf(state, Query::DropOutputs));
  drop.bind(id);
  if (!drop.finish()) {
    return false;
  }
  for (const OutputRecord& output : outputs) {
    StatementUse put(statementOf(state, Query::PutOutput));
    put.bindBytes(output.path);
    put.bind(id);
    put.bind(output.size);
    if (!put.finish()) {
      return false;
    }
  }
  return true;
}

/// Goes through the files that a statement gives.
bool visitAll(StateHandle& state, StatementUse& use,
              const std::function<void(const FileRecord&)>& visit) {
  while (use.step()) {
    auto [file, id] = fileFrom(use);
    file.outputs = outputsOf(state, id);
    visit(file);
  }
  return use.finish();
}

bool setUp(StateHandle& state, int version) {
  return executeStatements(state.database, kSetup) &&
         (version != 1 || executeStatements(state.database, kUpgradeOfVersion1)) &&
         (version >= kStateVersion || executeStatements(state.database, kStateSchema));
}

/// The id of the file with this path; nothing if it is not known, or on a failure.
std::optional<std::int64_t> idOf(StateHandle& state, const std::string& path) {
  StatementUse find(statementOf(state, Query::FindId));
  find.bindBytes(path);
  return find.step() ? std::optional(find.integer()) : std::nullopt;
}

bool dropTranscript(StateHandle& state, std::int64_t id) {
  StatementUse drop(statementOf(state, Query::DropTranscript));
  drop.bind(id);
  return drop.finish();
}

}  // namespace

void CloseState::operator()(StateHandle* state) const {
  for (sqlite3_stmt* const statement : state->statements) {
    sqlite3_finalize(statement);
  }
  sqlite3_close(state->database);
  delete state;
}

State openState(const std::string& path, std::string& problem, StateUse use) {
  State state(new StateHandle);
  const auto fail = [&] {
    problem = path + ": " + stateProblem(*state);
    return State();
  };
  if (use == StateUse::Read && hasLog(path)) {
    problem = path + ": written by a run that was cut short; --merge puts it right";
    return State();
  }
  if (openDatabase(path, use, &state->database) != SQLITE_OK) {
    return fail();
  }
  constexpr int kPatience = 5000;  // milliseconds that a reader may keep the state
  sqlite3_busy_timeout(state->database, kPatience);
  const int version = numberFrom(state->database, "PRAGMA user_version", -1);
  if (version > kStateVersion) {
    problem = path + ": written by a newer version of the program";
    return State();
  }
  const bool isWritten = use == StateUse::Write || use == StateUse::Alone;
  if (!isWritten && version < kStateVersion) {
    problem = path +
              ": written by an earlier version of the program, which a run, or --prune, "
              "brings up to this one";
    return State();
  }
  if (version < 0 || (isWritten && !setUp(*state, version)) || !prepareStatements(*state)) {
    return fail();
  }
  return state;
}

std::string stateProblem(StateHandle& state) {
  const bool isForgotten = sqlite3_errcode(state.database) == SQLITE_OK && !state.dropped.empty();
  return isForgotten ? state.dropped : sqlite3_errmsg(state.database);
}

bool beginChanges(StateHandle& state) {
  return executeStatements(state.database, "BEGIN IMMEDIATE");
}

bool commitChanges(StateHandle& state) {
  if (executeStatements(state.database, "COMMIT")) {
    return true;
  }
  dropChanges(state);
  return false;
}

void dropChanges(StateHandle& state) {
  if (sqlite3_get_autocommit(state.database) == 0) {
    state.dropped = sqlite3_errmsg(state.database);
    // Nothing is left to do if that fails as well.
    (void)executeStatements(state.database, "ROLLBACK");
  }
}

std::int64_t putRun(StateHandle& state, const RunRecord& run) {
  const std::string arguments = argumentsText(run);
  StatementUse use(statementOf(state, Query::PutRun));
  bindRun(use, run, arguments);
  const std::int64_t id = use.step() ? use.integer() : 0;
  return use.finish() ? id : 0;
}

bool putFile(StateHandle& state, const FileRecord& file) {
  std::int64_t id = 0;
  {
    StatementUse use(statementOf(state, Query::PutFile));
    bindFile(use, file);
    id = use.step() ? use.integer() : 0;
    if (!use.finish()) {
      return false;
    }
  }
  return putOutputs(state, id, file.outputs);
}

bool putTranscript(StateHandle& state, const std::string& path, const std::string& transcript) {
  const std::optional<std::int64_t> id = idOf(state, path);
  if (!id) {
    return false;
  }
  if (transcript.empty()) {
    return dropTranscript(state, *id);
  }
  // Most are short and alike in every line: a fast pass makes a third of them.
  uLongf length = compressBound(transcript.size());
  std::string packed(length, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &length,
                reinterpret_cast<const Bytef*>(transcript.data()), transcript.size(),
                Z_BEST_SPEED) != Z_OK) {
    return false;
  }
  packed.resize(length);
  StatementUse put(statementOf(state, Query::PutTranscript));
  put.bind(*id);
  put.bind(static_cast<std::int64_t>(transcript.size()));
  put.bindBytes(packed);
  return put.finish();
}

std::optional<std::string> findTranscript(StateHandle& state, const std::string& path) {
  constexpr std::int64_t kMost = std::int64_t{1} << 30;  // far more than is ever kept
  const std::optional<std::int64_t> id = idOf(state, path);
  StatementUse find(statementOf(state, Query::FindTranscript));
  find.bind(id.value_or(0));
  if (!id || !find.step()) {
    return std::nullopt;
  }
  const std::int64_t size = find.integer();
  const std::string packed = find.bytes();
  if (size < 0 || size > kMost) {
    return std::nullopt;
  }
  std::string transcript(static_cast<std::size_t>(size), '\0');
  uLongf length = transcript.size();
  const bool isWhole =
      uncompress(reinterpret_cast<Bytef*>(transcript.data()), &length,
                 reinterpret_cast<const Bytef*>(packed.data()), packed.size()) == Z_OK;
  return isWhole && length == transcript.size() ? std::optional(transcript) : std::nullopt;
}

std::string ownerOf(StateHandle& state, const std::string& output) {
  StatementUse find(statementOf(state, Query::FindOwner));
  find.bindBytes(output);
  return find.step() ? find.bytes() : std::string();
}

bool removeFile(StateHandle& state, const std::string& path) {
  const std::optional<std::int64_t> id = idOf(state, path);
  if (!id) {
    return sqlite3_errcode(state.database) == SQLITE_OK;
  }
  StatementUse remove(statementOf(state, Query::RemoveFile));
  remove.bind(*id);
  return putOutputs(state, *id, {}) && dropTranscript(state, *id) && remove.finish();
}

std::optional<FileRecord> findFile(StateHandle& state, const std::string& path) {
  StatementUse use(statementOf(state, Query::FindFile));
  use.bindBytes(path);
  if (!use.step()) {
    return std::nullopt;
  }
  auto [file, id] = fileFrom(use);
  file.outputs = outputsOf(state, id);
  return std::move(file);
}

bool forEachFile(StateHandle& state, const std::function<void(const FileRecord&)>& visit) {
  StatementUse use(statementOf(state, Query::AllFiles));
  return visitAll(state, use, visit);
}

bool forEachFileToShow(StateHandle& state, std::int64_t atMost,
                       const std::function<void(const FileRecord&)>& visit) {
  StatementUse use(statementOf(state, Query::FilesToShow));
  use.bind(atMost);
  return visitAll(state, use, visit);
}

std::vector<Total> totalsOf(StateHandle& state) {
  std::vector<Total> totals;
  StatementUse use(statementOf(state, Query::Totals));
  while (use.step()) {
    Total& total = totals.emplace_back();
    total.status = statusFrom(use.bytes());
    total.reason = use.bytes();
    total.files = use.integer();
    total.size = use.integer();
    total.triangles = use.integer();
    total.seconds = use.real();
  }
  return totals;
}

std::vector<RunRecord> allRuns(StateHandle& state) {
  std::vector<RunRecord> runs;
  StatementUse use(statementOf(state, Query::AllRuns));
  while (use.step()) {
    runs.push_back(runFrom(use));
  }
  return runs;
}

}  // namespace plenvorith
