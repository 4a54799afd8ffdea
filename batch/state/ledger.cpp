#include "batch/state/ledger.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <set>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/inputs/input_identity.h"
#include "batch/system/descriptor.h"
#include "batch/system/folder.h"

namespace plenvorith {
namespace {

std::string inOutputFolder(const Places& places, const std::string& path) {
  return places.output + '/' + path;
}

std::set<std::string> pathsOf(const std::vector<OutputRecord>& outputs) {
  std::set<std::string> paths;
  for (const OutputRecord& output : outputs) {
    paths.insert(output.path);
  }
  return paths;
}

/// The outputs of `more` behind those of `outputs`, each path once.
std::vector<OutputRecord> joined(std::vector<OutputRecord> outputs,
                                 const std::vector<OutputRecord>& more) {
  std::set<std::string> paths = pathsOf(outputs);
  for (const OutputRecord& output : more) {
    if (paths.insert(output.path).second) {
      outputs.push_back(output);
    }
  }
  return outputs;
}

/// Where the outputs of a result go, below the output folder.
std::vector<OutputRecord> placedOutputs(const RunContext& context, const Finished& finished) {
  const std::string right = nameBelow(context.base, finished.input);
  // The extension may be another than the one that was asked for.
  const std::size_t stem = finished.outputName.size() - context.extension.size() - 1;
  std::vector<OutputRecord> outputs = finished.result.outputs;
  for (OutputRecord& output : outputs) {
    output.path.replace(0, stem, right);
  }
  return outputs;
}

/// Whether a time of change says nothing of a file that was looked at then: a further change might
/// leave it as it is, or the clock was wrong.
bool isTooYoung(std::int64_t mtime, std::int64_t lookedAt) {
  constexpr std::int64_t kTick = 2000000000;  // that of the coarsest file systems, in nanoseconds
  return mtime > lookedAt - kTick;
}

/// What stands for a time that says nothing.
constexpr std::int64_t kUnknownTime = -1;

FileRecord recordOf(const RunContext& context, const Finished& finished) {
  const JobResult& result = finished.result;
  FileRecord record;
  static_cast<Outcome&>(record) = result;
  record.path = finished.input;
  record.name = nameBelow(context.base, finished.input);
  record.run = context.run;
  record.status = result.isConverted ? FileStatus::Delivering : FileStatus::Failed;
  record.mtime = isTooYoung(result.mtime, result.started) ? kUnknownTime : result.mtime;
  record.settings = context.settings;
  record.program = context.program;
  record.sameAs = finished.sameAs;
  return record;
}

/// One result on its way into the state.
struct Settling {
  FileRecord record;                  ///< its outputs are all that may be there
  std::vector<OutputRecord> outputs;  ///< those that will stay
  std::string transcript;
  bool isKept = false;  ///< the state has the record already, and nothing is to be done
  std::string obstacle = {};
  bool wasConverted = false;
  std::int64_t removed = 0;
};

/// What a conversion said; of more than a million bytes the two ends.
std::string readTranscript(const std::string& path) {
  constexpr std::size_t kMost = std::size_t{1} << 20;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  std::string transcript = readEnds(file.get(), kMost);
  struct stat status {};
  if (fstat(file.get(), &status) == 0 && static_cast<std::size_t>(status.st_size) > kMost) {
    transcript.insert(kMost / 2, "\n[" + std::to_string(status.st_size - std::int64_t{kMost}) +
                                     " bytes are left out here]\n");
  }
  return transcript;
}

Settling settlingOf(StateHandle& state, const RunContext& context, const Finished& finished) {
  Settling settling{.record = recordOf(context, finished), .outputs = {}, .transcript = {}};
  std::optional<FileRecord> before = findFile(state, finished.input);
  if (!finished.result.isTried && before && !before->outputs.empty()) {
    settling.obstacle = finished.result.reason;
    settling.record = std::move(*before);
    settling.isKept = true;
    return settling;
  }
  settling.wasConverted = before && before->status == FileStatus::Converted;
  settling.transcript = readTranscript(finished.transcript);
  settling.outputs = placedOutputs(context, finished);
  settling.record.outputs =
      joined(settling.outputs, before ? before->outputs : std::vector<OutputRecord>());
  return settling;
}

/// `withTranscripts`: those are put, too.
bool putAll(StateHandle& state, const std::vector<Settling>& all, bool withTranscripts) {
  if (!beginChanges(state)) {
    return false;
  }
  const bool isPut = std::all_of(all.begin(), all.end(), [&](const Settling& settling) {
    return settling.isKept ||
           (putFile(state, settling.record) &&
            (!withTranscripts || putTranscript(state, settling.record.path, settling.transcript)));
  });
  if (!isPut) {
    dropChanges(state);
    return false;
  }
  return commitChanges(state);
}

/// Waits until all that was written to the output folder's disk is on it. One call for many files:
/// to wait for each of them would cost a multiple of their conversion.
bool waitForDisk(const Places& places) {
  const Descriptor folder(open(places.output.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return folder.isOpen() && syncfs(folder.get()) == 0;
}

std::string moveProblem(int error, const std::string& path) {
  switch (error) {
    case ENAMETOOLONG:
      return "name too long";
    case ENOSPC:
    case EDQUOT:
      return "disk full";
    default:
      return "cannot be moved into place: " + path + ": " + strerror(error);
  }
}

/// Moves the outputs from the job's folder to their places; says what is in the way.
std::string moveOutputs(const Places& places, const Finished& finished, const Settling& settling) {
  for (std::size_t i = 0; i < settling.outputs.size(); ++i) {
    const std::string from = finished.outFolder + '/' + finished.result.outputs[i].path;
    const std::string to = inOutputFolder(places, settling.outputs[i].path);
    if (!makeFolders(folderOf(to)) || rename(from.c_str(), to.c_str()) != 0) {
      return moveProblem(errno, to);
    }
  }
  return {};
}

/// What became of files that were to go.
struct Removal {
  std::int64_t removed = 0;         ///< so many were there
  std::vector<OutputRecord> stuck;  ///< those that cannot be removed now
};

/// Removes files that may be there, other than those that stay, this input's or another's.
Removal removeOutputs(const Places& places, const std::vector<OutputRecord>& outputs,
                      const std::set<std::string>& staying) {
  Removal removal;
  for (const OutputRecord& output : outputs) {
    const std::string path = inOutputFolder(places, output.path);
    if (staying.contains(output.path)) {
      continue;
    }
    if (unlink(path.c_str()) == 0) {
      ++removal.removed;
      removeEmptyFolders(places.output, path);
    } else if (errno != ENOENT && errno != ENOTDIR && errno != EISDIR && errno != ENAMETOOLONG) {
      removal.stuck.push_back(output);
    }
  }
  return removal;
}

/// Moves what a conversion made to its places, or finds that it has failed after all.
void deliver(const Places& places, const Finished& finished, Settling& settling) {
  FileRecord& record = settling.record;
  if (record.status != FileStatus::Delivering) {
    return;
  }
  const std::string problem = moveOutputs(places, finished, settling);
  record.status = problem.empty() ? FileStatus::Converted : FileStatus::Failed;
  if (!problem.empty()) {
    record.reason = problem;
    record.triangles = 0;
    record.bounds.reset();
    settling.outputs.clear();
  }
}

/// Does to the files what the state has been told.
void carryOut(const Places& places, const std::vector<Finished>& finished,
              std::vector<Settling>& all) {
  std::set<std::string> staying;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].isKept) {
      staying.merge(pathsOf(all[i].record.outputs));
      continue;
    }
    deliver(places, finished[i], all[i]);
    staying.merge(pathsOf(all[i].outputs));
  }
  for (Settling& settling : all) {
    if (!settling.isKept) {
      const Removal removal = removeOutputs(places, settling.record.outputs, staying);
      settling.record.outputs = joined(settling.outputs, removal.stuck);
      const bool isLost = settling.wasConverted && settling.record.status == FileStatus::Failed;
      settling.removed = isLost ? removal.removed : 0;
    }
  }
}

}  // namespace

std::vector<Settled> settle(StateHandle& state, const RunContext& context,
                            const std::vector<Finished>& finished) {
  std::vector<Settling> all;
  all.reserve(finished.size());
  for (const Finished& one : finished) {
    all.push_back(settlingOf(state, context, one));
  }
  const bool isAnyDelivered = std::any_of(all.begin(), all.end(), [](const Settling& settling) {
    return settling.record.status == FileStatus::Delivering && !settling.isKept;
  });
  if (!putAll(state, all, true) || (isAnyDelivered && !waitForDisk(context.places))) {
    return {};
  }
  carryOut(context.places, finished, all);
  // Where that fails, the state says of the outputs that they may not be whole, and they are made
  // again some day.
  if (!isAnyDelivered || waitForDisk(context.places)) {
    (void)putAll(state, all, false);
  }
  std::vector<Settled> settled;
  settled.reserve(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    (void)unlink(finished[i].transcript.c_str());  // there is none of a file that was not tried
    settled.push_back(
        {std::move(all[i].record), all[i].isKept, std::move(all[i].obstacle), all[i].removed});
  }
  return settled;
}

bool isUpToDate(const RunContext& context, const std::string& input, FileRecord& record,
                bool& isTouched) {
  isTouched = false;
  int error = 0;
  const std::optional<InputIdentity> identity = identityOf(input, error);
  if (!identity || record.status != FileStatus::Converted || record.size != identity->size ||
      record.settings != context.settings || record.program != context.program ||
      record.name != nameBelow(context.base, input) || record.outputs.empty()) {
    return false;
  }
  for (const OutputRecord& output : record.outputs) {
    const auto made = identityOf(inOutputFolder(context.places, output.path), error);
    if (!made || !made->isRegular || made->size != output.size) {
      return false;
    }
  }
  // What an earlier version has noted tells neither.
  const bool isSameFile = record.inode == -1 ||
                          (record.inode == identity->inode && record.changed == identity->changed);
  if (record.mtime == identity->mtime && isSameFile) {
    return true;
  }
  const std::int64_t now = nanosecondsNow();
  if (record.hash.empty() || contentHash(input) != record.hash) {
    return false;
  }
  record.mtime = isTooYoung(identity->mtime, now) ? kUnknownTime : identity->mtime;
  record.changed = identity->changed;
  record.inode = identity->inode;
  isTouched = record.mtime != kUnknownTime;
  return true;
}

std::int64_t prune(StateHandle& state, const Places& places) {
  std::vector<FileRecord> gone;
  const bool isRead = forEachFile(state, [&](const FileRecord& record) {
    int error = 0;
    if (!identityOf(record.path, error) && (error == ENOENT || error == ENOTDIR)) {
      gone.push_back(record);
    }
  });
  if (!isRead) {
    return -1;
  }
  std::int64_t count = 0;
  for (FileRecord& record : gone) {
    record.outputs = removeOutputs(places, record.outputs, {}).stuck;
    const bool isGone = record.outputs.empty();
    // What cannot be removed now stays on record until it is gone.
    if (!(isGone ? removeFile(state, record.path) : putFile(state, record))) {
      return -1;
    }
    count += isGone ? 1 : 0;
  }
  return count;
}

std::string findCollision(StateHandle& state, const RunContext& context,
                          const std::vector<InputFile>& files) {
  const std::vector<RunRecord> runs = allRuns(state);
  const bool isSameBase = std::all_of(
      runs.begin(), runs.end(), [&](const RunRecord& run) { return run.base == context.base; });
  if (isSameBase) {
    return {};
  }
  for (const InputFile& file : files) {
    const std::string owner =
        ownerOf(state, nameBelow(context.base, file.path) + '.' + context.extension);
    if (!owner.empty() && owner != file.path) {
      return "the output of " + file.path + " would replace that of " + owner +
             ": --base with a folder that holds both keeps them apart (--prune forgets an input "
             "that is gone)";
    }
  }
  return {};
}

std::string nameBelow(const std::string& base, const std::string& input) {
  return input.starts_with(base) ? input.substr(base.size()) : input;
}

}  // namespace plenvorith
