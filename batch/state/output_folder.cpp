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

/// Takes a lock; says what is in the way. A disk that has no locks is no obstacle for a shard.
std::string takeLock(const std::string& path, int operation, const Options& options,
                     Descriptor& lock) {
  if (!makeFolders(folderOf(path))) {
    return folderOf(path) + ": " + strerror(errno);
  }
  constexpr mode_t kRights = 0666;
  lock = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights));
  if (!lock.isOpen()) {
    return path + ": " + strerror(errno);
  }
  if (flock(lock.get(), operation | LOCK_NB) != 0 && (errno == EWOULDBLOCK || !options.shard)) {
    return "another run is writing to " + absolutePath(options.output) +
           (options.shard ? ", or to this shard" : "");
  }
  return {};
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

}  // namespace

std::string takeOutputFolder(const Options& options, const RunContext& context, Locks& locks) {
  const Places& places = context.places;
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
  std::string obstacle =
      takeLock(all.lock, options.shard ? LOCK_SH : LOCK_EX, options, locks.output);
  if (obstacle.empty() && options.shard) {
    obstacle = takeLock(places.lock, LOCK_EX, options, locks.shard);
  }
  if (!obstacle.empty()) {
    return obstacle;
  }
  if (!options.shard && !options.merge && access(divisionPath(all).c_str(), F_OK) == 0) {
    return "there are shards in " + places.output + " that --merge has not taken in";
  }
  removeTree(places.run);
  return makeFolders(places.run) ? std::string() : places.run + ": " + strerror(errno);
}

std::string becomeShard(const Options& options, const RunContext& context, StateHandle* state,
                        std::vector<InputFile>& files) {
  const Places all = placesIn(context.places.output);
  const Division proposal = proposalOf(options, context, files);
  std::string problem;
  const Division division = state == nullptr
                                ? readDivision(divisionPath(all)).value_or(proposal)
                                : agreeOnDivision(divisionPath(all), proposal, problem);
  if (problem.empty()) {
    problem = strangeness(division, proposal, all);
  }
  if (!problem.empty()) {
    return problem;
  }
  files = filesOfShard(division, options.shard->number);
  return state == nullptr || importRecords(all.database, *state, files, problem) ? "" : problem;
}

}  // namespace plenvorith
