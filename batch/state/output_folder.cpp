#include "batch/state/output_folder.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "batch/state/merge.h"
#include "batch/state/names.h"
#include "batch/state/shard.h"
#include "batch/system/folder.h"

namespace plenvorith {
namespace {

/// Takes a lock; says what is in the way. A disk that has no locks is no obstacle for shards and
/// their merging, which are for such disks; `isLocked` is cleared there.
std::string takeLock(const std::string& path, int operation, const Options& options,
                     Descriptor& lock, bool& isLocked) {
  if (!makeFolders(folderOf(path))) {
    return folderOf(path) + ": " + strerror(errno);
  }
  constexpr mode_t kRights = 0666;
  lock = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights));
  if (!lock.isOpen()) {
    return path + ": " + strerror(errno);
  }
  if (flock(lock.get(), operation | LOCK_NB) == 0) {
    return {};
  }
  isLocked = false;
  if (errno == EWOULDBLOCK) {
    return "another run is writing to " + absolutePath(options.output) +
           (options.shard ? ", or to this shard" : "");
  }
  const std::string reason = strerror(errno);
  lock.close();
  return options.shard || options.merge
             ? std::string()
             : path + ": no lock: " + reason + " (--shard 1/1 and --merge need none)";
}

/// What the shards of one division have in common.
Division proposalOf(const Options& options, const RunContext& context,
                    const std::vector<InputFile>& files) {
  return {options.shard->count, context.settings + " base=" + context.base, files};
}

/// Why a shard does not belong to a division; empty if it does.
std::string strangeness(const Division& division, const Division& own, const Places& places) {
  return division.count == own.count && division.settings == own.settings
             ? std::string()
             : "the shards in " + places.output + " are others (" + std::to_string(division.count) +
                   ", " + division.settings + "): --merge ends them";
}

/// What was converted before the division and would be lost.
std::string collisionBefore(const Places& all, const RunContext& context,
                            const std::vector<InputFile>& files) {
  if (access(all.database.c_str(), F_OK) != 0) {
    return {};
  }
  std::string problem;
  const State state = openState(all.database, problem, StateUse::Read);
  return state ? findCollision(*state, context, files) : problem;
}

}  // namespace

std::string takeOutputFolder(const Options& options, RunContext& context, OwnedFolder& owned) {
  Places& places = context.places;
  const Places all = placesIn(places.output);
  if (options.shard) {
    // Looked at now, too: a shard of others shall leave nothing behind.
    const std::optional<Division> division = readDivision(divisionPath(all));
    std::string problem =
        division ? strangeness(*division, proposalOf(options, context, {}), all) : "";
    if (!problem.empty()) {
      return problem;
    }
  }
  bool isLocked = true;
  std::string obstacle =
      takeLock(all.lock, options.shard ? LOCK_SH : LOCK_EX, options, owned.output, isLocked);
  if (obstacle.empty() && options.shard) {
    obstacle = takeLock(places.lock, LOCK_EX, options, owned.shard, isLocked);
  }
  if (!obstacle.empty()) {
    return obstacle;
  }
  if (!options.shard && !options.merge && access(divisionPath(all).c_str(), F_OK) == 0) {
    return "there are shards in " + places.output + " that --merge has not taken in";
  }
  // Whoever holds the lock knows that no other run is under way: what stands there was left behind.
  const std::string below = places.run + '/';
  for (const std::string& name :
       isLocked ? namesInFolder(places.run) : std::vector<std::string>()) {
    removeTree(below + name);
  }
  owned.run = WorkFolder(places.run);
  if (owned.run.path().empty()) {
    return "no work folder below " + places.run + ": " + strerror(errno);
  }
  places.run = owned.run.path();
  return {};
}

std::string becomeShard(const Options& options, const RunContext& context, StateHandle* state,
                        std::vector<InputFile>& files) {
  const Places all = placesIn(context.places.output);
  const Division proposal = proposalOf(options, context, files);
  std::string problem = collisionBefore(all, context, files);
  if (!problem.empty()) {
    return problem;
  }
  const Division division = options.dryRun ? readDivision(divisionPath(all)).value_or(proposal)
                                           : agreeOnDivision(divisionPath(all), proposal, problem);
  if (problem.empty()) {
    problem = strangeness(division, proposal, all);
  }
  if (!problem.empty()) {
    return problem;
  }
  files = filesOfShard(division, options.shard->number);
  return options.dryRun || importRecords(all.database, *state, files, problem) ? "" : problem;
}

}  // namespace plenvorith
