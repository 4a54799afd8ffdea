#include "batch/state/merge.h"

#include <cerrno>
#include <map>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "batch/system/descriptor.h"
#include "batch/system/folder.h"

namespace plenvorith {
namespace {

/// Takes what one shard knows into the state, whole or not at all. Gives the number of its files,
/// or nothing on failure.
std::optional<std::int64_t> takeIn(StateHandle& state, StateHandle& shard) {
  std::map<std::int64_t, std::int64_t> runs;  // the shard's numbers and those in the state
  if (!beginChanges(state)) {
    return std::nullopt;
  }
  bool isTaken = true;
  for (RunRecord run : allRuns(shard)) {
    const std::int64_t id = run.id;
    run.id = 0;
    runs[id] = putRun(state, run);
    isTaken = isTaken && runs[id] != 0;
  }
  std::int64_t files = 0;
  const bool isRead = forEachFile(shard, [&](const FileRecord& record) {
    const auto run = runs.find(record.run);
    // What the shard had from the state and has not converted again is there already.
    if (run != runs.end() && isTaken) {
      FileRecord taken = record;
      taken.run = run->second;
      isTaken = putFile(state, taken) &&
                putTranscript(state, taken.path, findTranscript(shard, taken.path).value_or(""));
      ++files;
    }
  });
  if (!isTaken || !isRead) {
    dropChanges(state);
    return std::nullopt;
  }
  return commitChanges(state) ? std::optional(files) : std::nullopt;
}

void mergeOne(StateHandle& state, const std::string& folder, Merged& merged) {
  constexpr mode_t kRights = 0666;
  const Descriptor lock(open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights));
  // A disk without locks cannot tell; whoever merges there waits for the shards.
  if (!lock.isOpen() || (flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)) {
    merged.problems.push_back("this shard is at work: " + folder);
    return;
  }
  std::string problem;
  std::optional<std::int64_t> files;
  {
    const State shard = openState(folder + "/state.db", problem, StateUse::Alone);
    files = shard ? takeIn(state, *shard) : std::nullopt;
  }
  if (!files) {
    merged.problems.push_back(problem.empty() ? folder + ": " + stateProblem(state) : problem);
    return;
  }
  ++merged.shards;
  merged.files += *files;
  removeTree(folder);
}

}  // namespace

bool importRecords(const std::string& database, StateHandle& shard,
                   const std::vector<InputFile>& files, std::string& problem) {
  if (access(database.c_str(), F_OK) != 0) {
    return true;
  }
  const State state = openState(database, problem, StateUse::Read);
  if (!state) {
    return false;
  }
  bool isTaken = beginChanges(shard);
  for (const InputFile& file : files) {
    // What the shard knows itself is newer.
    if (isTaken && !findFile(shard, file.path)) {
      std::optional<FileRecord> record = findFile(*state, file.path);
      if (record) {
        record->run = 0;
        isTaken = putFile(shard, *record);
      }
    }
  }
  if (!isTaken || !commitChanges(shard)) {
    problem = stateProblem(shard);
    dropChanges(shard);
    return false;
  }
  return true;
}

Merged mergeShards(StateHandle& state, const Places& places) {
  Merged merged;
  const std::string folder = shardsFolder(places);
  for (const std::string& name : namesInFolder(folder)) {
    if (name.find("-of-") != std::string::npos) {
      mergeOne(state, std::string(folder).append("/").append(name), merged);
    }
  }
  if (merged.problems.empty()) {
    removeTree(folder);
  }
  return merged;
}

}  // namespace plenvorith
