#include "batch/worker/worker.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include "batch/inputs/input_facts.h"
#include "batch/inputs/input_header.h"
#include "batch/inputs/input_identity.h"
#include "batch/system/descriptor.h"
#include "batch/system/folder.h"
#include "batch/system/host_name.h"
#include "batch/system/lines.h"
#include "batch/system/signals.h"
#include "batch/system/text.h"
#include "batch/worker/outputs.h"
#include "batch/worker/reason.h"
#include "batch/worker/warm_up.h"

namespace plenvorith {
namespace {

constexpr std::size_t kTranscriptEnds = std::size_t{1} << 17;

constexpr const char* kCannotBeRead = "cannot be read";

std::string nameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

/// Why a file cannot be converted at all; empty if it can be tried.
std::string obstacle(const Job& job, const std::optional<InputIdentity>& identity, int error) {
  if (error == ENAMETOOLONG || job.outputName.size() > NAME_MAX) {
    return "name too long";
  }
  if (!identity || access(job.input.c_str(), R_OK) != 0) {
    return kCannotBeRead + std::string(": ") + strerror(identity ? errno : error);
  }
  if (identity->isRegular && identity->size == 0) {
    return "empty";
  }
  return {};
}

/// The file that the streams of the conversion go to. A disk that is full may not even have room
/// for its name; memory has.
Descriptor openTranscript(const std::string& path) {
  constexpr mode_t kRights = 0666;
  constexpr int kMode = O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC;
  (void)makeFolders(folderOf(path));  // if that fails, so does what follows
  Descriptor file(open(path.c_str(), kMode, kRights));
  return file.isOpen() ? std::move(file) : Descriptor(memfd_create("transcript", MFD_CLOEXEC));
}

/// The path that the converter is given: the input's own, or a link to it where the name is so long
/// that the name of a copy would be longer than a name can be.
std::string inputPathFor(const Job& job) {
  constexpr std::size_t kAddition = sizeof ".clean.stp" - 1;
  if (nameOf(job.input).size() + kAddition <= NAME_MAX) {
    return job.input;
  }
  const std::string link = job.temporaryFolder + "/input.stp";
  return symlink(job.input.c_str(), link.c_str()) == 0 ? link : job.input;
}

ChildSettings childFor(const Job& job, int transcript) {
  ChildSettings child;
  child.workFolder = job.outFolder;
  child.temporaryFolder = job.temporaryFolder;
  child.transcript = transcript;
  child.settings = job.settings;
  child.arguments = {inputPathFor(job), job.outputName, job.settings.deflection};
  if (job.settings.prepare) {
    child.preparedPath = job.temporaryFolder + "/prepared.stp";
  }
  if (job.names) {
    child.namesPath = job.temporaryFolder + '/' + kNamesFile;
  }
  if (job.settings.split) {
    child.arguments.emplace_back("yes");
  }
  return child;
}

void noteEnd(const ChildEnd& end, JobResult& result) {
  result.exitStatus = end.exitStatus;
  result.signal = end.signal;
  result.seconds = end.seconds;
  result.cpuSeconds = end.cpuSeconds;
  result.peakMemory = end.peakMemory;
}

/// Whether the copy of the input that the converter made may have been cut short, which it does not
/// notice. Between two looks at the disk other conversions may have filled it and left it again, so
/// there has to be room to spare whenever it is looked at.
bool mayLackPartsOfCopy(const ChildEnd& end, const std::string& transcript, std::int64_t copied) {
  constexpr std::int64_t kSpare = std::int64_t{1} << 20;
  constexpr std::int64_t kCopies = 8;
  return madeCopy(transcript) && end.leastSpace < kCopies * copied + kSpare;
}

/// Decides what became of the file once its conversion has ended.
void judge(const Job& job, const ChildEnd& end, const std::string& transcript, JobResult& result) {
  MadeFiles made = lookAtOutputs(job.outFolder);
  const bool isWhole =
      end.exitStatus == 0 && !end.timedOut && made.incomplete.empty() && !made.outputs.empty();
  const bool isDoubtful = isWhole && mayLackPartsOfCopy(end, transcript, result.size);
  if (isWhole && !isDoubtful) {
    result.isConverted = true;
    result.outputs = std::move(made.outputs);
    result.triangles = made.triangles;
    result.bounds = made.bounds;
    result.reason = endsInTheMiddle(job.input) ? kEndsInTheMiddle : end.doubt;
    return;
  }
  result.lastLine = lastLineOf(transcript);
  if (result.lastLine.starts_with("Saved: ")) {
    result.lastLine.clear();  // the prepared copy, which goes, is no news of a failure
  }
  result.reason =
      isDoubtful ? kDiskFull
                 : reasonFor({end, transcript, factsOf(job.input), job.settings, made.incomplete});
  result.isTried = result.reason != kDiskFull && end.forkError == 0;
}

/// Paths of a job that are relative are those below the folder where the worker runs.
void makeAbsolute(const std::string& folder, Job& job) {
  for (std::string* const path :
       {&job.input, &job.outFolder, &job.temporaryFolder, &job.transcript}) {
    if (!path->starts_with('/')) {
      *path = folder + '/' + *path;
    }
  }
}

/// Waits for jobs and appends them to `text`; false if there will be none any more.
bool receive(int jobs, const WorkerSignals& signals, std::string& text) {
  pollfd events[] = {{jobs, POLLIN, 0}, {signals.signals, POLLIN, 0}, {signals.results, 0, 0}};
  if (poll(events, 3, -1) < 0) {
    return errno == EINTR;
  }
  for (int signal = 0; (signal = nextSignal(signals.signals)) != 0;) {
    if (signal != SIGCHLD) {
      return false;
    }
  }
  if ((events[2].revents & (POLLERR | POLLHUP)) != 0) {
    return false;
  }
  return events[0].revents == 0 || readMore(jobs, text);
}

}  // namespace

JobResult convertFile(const Job& job, const WorkerSignals& signals, bool& isStopped) {
  JobResult result;
  result.id = job.id;
  result.started = nanosecondsNow();
  int error = 0;
  const std::optional<InputIdentity> identity = identityOf(job.input, error);
  result.reason = obstacle(job, identity, error);
  if (identity) {
    result.size = identity->size;
    result.mtime = identity->mtime;
    result.changed = identity->changed;
    result.inode = identity->inode;
  }
  if (!result.reason.empty()) {
    (void)unlink(job.transcript.c_str());  // an earlier one tells nothing of this
    result.isTried = !result.reason.starts_with(kCannotBeRead);
    return result;
  }
  if (!makeEmptyFolder(job.outFolder) || !makeEmptyFolder(job.temporaryFolder)) {
    result.reason = errno == ENOSPC ? kDiskFull : std::string("no work folder: ") + strerror(errno);
    result.isTried = false;
    return result;
  }
  if (identity->isRegular) {
    result.hash = contentHash(job.input);
    result.header = headerOf(job.input);
  }
  const Descriptor transcript = openTranscript(job.transcript);
  const ChildEnd end = runChild(childFor(job, transcript.get()), signals);
  isStopped = end.isStopped;
  noteEnd(end, result);
  judge(job, end, readEnds(transcript.get(), kTranscriptEnds), result);
  const std::optional<InputIdentity> afterwards = identityOf(job.input, error);
  if (!afterwards || !isSame(*identity, *afterwards)) {
    result.isConverted = false;
    result.outputs.clear();
    result.reason = "changed while it was converted";
  }
  return result;
}

int runWorker(int jobs, int results) {
  // Where whoever starts the worker ignores it, the system would bury the children.
  (void)signal(SIGCHLD, SIG_DFL);
  const Descriptor listener = listenToSignals({SIGCHLD, SIGHUP, SIGINT, SIGTERM});
  const WorkerSignals signals{listener.get(), results};
  const std::string host = hostName();
  const std::string folder = absolutePath(".");
  std::string text;
  bool isWarm = false;
  while (receive(jobs, signals, text)) {
    for (const std::string& line : takeLines(text)) {
      std::optional<Job> job = jobFrom(line);
      if (!job) {
        return 2;
      }
      makeAbsolute(folder, *job);
      if (!isWarm && job->settings.program.empty() && makeEmptyFolder(job->temporaryFolder)) {
        warmUp(job->temporaryFolder);
        isWarm = true;
      }
      bool isStopped = false;
      JobResult result = convertFile(*job, signals, isStopped);
      result.host = host;
      if (isStopped) {
        return 0;
      }
      if (!writeAll(results, lineFrom(result) + '\n')) {
        return 1;
      }
    }
  }
  return 0;
}

}  // namespace plenvorith
