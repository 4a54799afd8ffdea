#include "batch/state/ledger.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <set>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "batch/inputs/input_identity.h"
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
std::vector<OutputRecord> placedOutputs(const JobResult& result, const std::string& name) {
  const std::string folder = name.substr(0, name.rfind('/') + 1);
  std::vector<OutputRecord> outputs = result.outputs;
  for (OutputRecord& output : outputs) {
    output.path.insert(0, folder);
  }
  return outputs;
}

/// Whether a time of change says nothing: a further change might leave it as it is, or the clock
/// was wrong.
bool isTooYoung(std::int64_t mtime) {
  constexpr std::int64_t kNanoseconds = 1000000000;
  constexpr std::int64_t kTick = 2 * kNanoseconds;  // that of the coarsest file systems
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return mtime > now.tv_sec * kNanoseconds + now.tv_nsec - kTick;
}

/// What stands for a time that says nothing.
constexpr std::int64_t kUnknownTime = -1;

FileRecord recordOf(const RunContext& context, const Finished& finished) {
  const JobResult& result = finished.result;
  FileRecord record;
  record.path = finished.input;
  record.name = nameBelow(context.base, finished.input);
  record.run = context.run;
  record.status = result.isConverted ? FileStatus::Delivering : FileStatus::Failed;
  record.reason = result.reason;
  record.lastLine = result.lastLine;
  record.exitStatus = result.exitStatus;
  record.signal = result.signal;
  record.size = result.size;
  record.mtime = isTooYoung(result.mtime) ? kUnknownTime : result.mtime;
  record.hash = result.hash;
  record.settings = context.settings;
  record.program = context.program;
  record.triangles = result.triangles;
  record.seconds = result.seconds;
  record.cpuSeconds = result.cpuSeconds;
  record.peakMemory = result.peakMemory;
  record.bounds = result.bounds;
  record.host = result.host;
  record.transcript = transcriptFor(record.name);
  return record;
}

/// One result on its way into the state.
struct Settling {
  FileRecord record;                  ///< its outputs are all that may be there
  std::vector<OutputRecord> outputs;  ///< those that will stay
};

bool putAll(StateHandle& state, const std::vector<Settling>& all) {
  if (!beginChanges(state)) {
    return false;
  }
  const bool isPut = std::all_of(all.begin(), all.end(), [&](const Settling& settling) {
    return putFile(state, settling.record);
  });
  if (!isPut) {
    dropChanges(state);
    return false;
  }
  return commitChanges(state);
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

/// Removes files that may be there, other than those that stay, this input's or another's.
void removeOutputs(const Places& places, const std::vector<OutputRecord>& outputs,
                   const std::set<std::string>& staying) {
  for (const OutputRecord& output : outputs) {
    const std::string path = inOutputFolder(places, output.path);
    if (!staying.contains(output.path) && unlink(path.c_str()) == 0) {
      removeEmptyFolders(places.output, path);
    }
  }
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
    deliver(places, finished[i], all[i]);
    staying.merge(pathsOf(all[i].outputs));
  }
  for (Settling& settling : all) {
    removeOutputs(places, settling.record.outputs, staying);
    settling.record.outputs = settling.outputs;
  }
}

}  // namespace

std::vector<FileRecord> settle(StateHandle& state, const RunContext& context,
                               const std::vector<Finished>& finished) {
  std::vector<Settling> all;
  for (const Finished& one : finished) {
    Settling settling{recordOf(context, one), {}};
    settling.outputs = placedOutputs(one.result, settling.record.name);
    const auto before = findFile(state, one.input);
    settling.record.outputs =
        joined(settling.outputs, before ? before->outputs : std::vector<OutputRecord>());
    all.push_back(std::move(settling));
  }
  if (!putAll(state, all)) {
    return {};
  }
  carryOut(context.places, finished, all);
  std::vector<FileRecord> records;
  records.reserve(all.size());
  for (const Settling& settling : all) {
    records.push_back(settling.record);
  }
  // Where that fails, the state says of the outputs that they may not be whole, and they are made
  // again some day.
  (void)putAll(state, all);
  return records;
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
  if (record.mtime == identity->mtime) {
    return true;
  }
  if (record.hash.empty() || contentHash(input) != record.hash) {
    return false;
  }
  record.mtime = isTooYoung(identity->mtime) ? kUnknownTime : identity->mtime;
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
  for (const FileRecord& record : gone) {
    removeOutputs(places, record.outputs, {});
    const std::string transcript = places.state + '/' + record.transcript;
    unlink(transcript.c_str());
    removeEmptyFolders(places.state, transcript);
    if (!removeFile(state, record.path)) {
      return -1;
    }
    ++count;
  }
  return count;
}

std::string nameBelow(const std::string& base, const std::string& input) {
  return input.starts_with(base) ? input.substr(base.size()) : input;
}

}  // namespace plenvorith
