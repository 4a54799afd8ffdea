#include "batch/host_loop.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "batch/descriptor.h"
#include "batch/division.h"
#include "batch/folder.h"
#include "batch/host_engine.h"
#include "batch/hosts.h"
#include "batch/progress.h"
#include "batch/version.h"

namespace plenvorith {
namespace {

using Clock = std::chrono::steady_clock;

/// All that changes while files are converted.
struct HostLoop {
  const Options& options;
  StateHandle& state;
  const RunContext& context;
  const std::vector<InputFile>& files;
  Summary& summary;
  std::string parallel;             ///< path of GNU parallel
  std::vector<bool> isOpen;         ///< for each file, whether it has no result yet
  std::size_t open = 0;             ///< the number of these
  std::vector<Finished> unsettled;  ///< results that the state does not know yet
  std::set<std::string> said;       ///< about hosts that are left out
  ProgressState progress;
  ProgressDisplay display;
  Descriptor signals;
  Clock::time_point start = Clock::now();
  int refusals = 0;  ///< of the state, one after the other
  LoopEnd end;
};

Descriptor listenToSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    sigaddset(&signals, signal);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

std::string ownPath() {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

HostWish wishOf(const HostLoop& loop, const std::string& folder) {
  return {.logins = loop.options.sshlogin,
          .jobs = loop.options.jobsText,
          .program = ownPath(),
          .version = "plenvorith-batch " + versionText(),
          .folder = folder,
          .transfer = loop.options.transfer};
}

/// The hosts that can convert now; says once of each other one why it cannot.
std::vector<Host> askHosts(HostLoop& loop, const HostWish& wish) {
  HostCheck check = checkHosts(loop.parallel, wish);
  for (const std::string& line : check.leftOut) {
    if (loop.said.insert(line).second) {
      showMessage(loop.display, line);
    }
  }
  if (check.hosts.empty()) {
    loop.end.problem = "no host can convert" + (check.problem.empty() ? "" : ": " + check.problem);
  }
  return std::move(check.hosts);
}

std::vector<std::vector<std::size_t>> chunksOf(const HostLoop& loop,
                                               const std::vector<Host>& hosts) {
  std::size_t workers = 0;
  for (const Host& host : hosts) {
    workers += static_cast<std::size_t>(host.jobs);
  }
  std::vector<std::size_t> left;
  std::vector<std::uint64_t> sizes;
  for (std::size_t file = 0; file < loop.files.size(); ++file) {
    if (loop.isOpen[file]) {
      left.push_back(file);
      sizes.push_back(static_cast<std::uint64_t>(loop.files[file].size));
    }
  }
  std::vector<std::vector<std::size_t>> chunks = divideIntoChunks(sizes, workers);
  for (std::vector<std::size_t>& chunk : chunks) {
    for (std::size_t& file : chunk) {
      file = left[file];
    }
  }
  return chunks;
}

void noteSettled(HostLoop& loop, const FileRecord& record, const Finished& finished) {
  const auto file = static_cast<std::size_t>(finished.result.id);
  addToSummary(loop.summary, record);
  ++loop.progress.done;
  loop.progress.doneBytes += loop.files[file].size;
  if (record.status != FileStatus::Converted) {
    ++loop.progress.failed;
    showMessage(loop.display, "failed: " + failureLine(record));
  }
  removeTree(finished.folder);
}

/// Settles what has come; a state that cannot be written, as on a full disk, is tried again.
void settleResults(HostLoop& loop) {
  constexpr int kMost = 50;
  if (loop.unsettled.empty()) {
    return;
  }
  const std::vector<FileRecord> records = settle(loop.state, loop.context, loop.unsettled);
  if (records.empty()) {
    if (++loop.refusals == kMost) {
      loop.end.problem = loop.context.places.database + ": " + stateProblem(loop.state);
    }
    return;
  }
  loop.refusals = 0;
  for (std::size_t i = 0; i < records.size(); ++i) {
    noteSettled(loop, records[i], loop.unsettled[i]);
  }
  loop.unsettled.clear();
}

/// Takes results; a host that was thought to be lost may send one late, when there is another.
void addResults(HostLoop& loop, std::vector<Finished> all) {
  for (Finished& finished : all) {
    const auto file = static_cast<std::size_t>(finished.result.id);
    if (loop.isOpen[file]) {
      loop.isOpen[file] = false;
      --loop.open;
      loop.unsettled.push_back(std::move(finished));
    }
  }
}

/// Waits until the hosts have sent something, a signal comes or the progress is to be shown. Gives
/// whether more may come from the hosts.
bool waitForHosts(HostLoop& loop, HostEngine& engine) {
  constexpr int kLook = 200;  // milliseconds
  pollfd events[] = {{loop.signals.get(), POLLIN, 0}, {engine.parallel.output, POLLIN, 0}};
  if (poll(events, 2, kLook) <= 0) {
    return true;
  }
  signalfd_siginfo info{};
  if (read(loop.signals.get(), &info, sizeof info) == sizeof info) {
    loop.end.signal = static_cast<int>(info.ssi_signo);
  }
  bool isAlive = true;
  if (events[1].revents != 0) {
    addResults(loop, collectFromHosts(engine, isAlive));
  }
  return isAlive;
}

bool isOver(const HostLoop& loop) {
  return loop.end.signal != 0 || !loop.end.problem.empty();
}

/// Sends out all that is left, once.
void runRound(HostLoop& loop, const std::string& folder) {
  if (!makeFolders(folder) || !std::ofstream(folder + "/here")) {
    loop.end.problem = folder + " cannot be written";
    return;
  }
  const HostWish wish = wishOf(loop, folder);
  const std::vector<Host> hosts = askHosts(loop, wish);
  if (hosts.empty()) {
    return;
  }
  HostEngine engine{
      loop.context, loop.options.settings, loop.files, folder, loop.options.transfer, {}, {}};
  loop.end.problem = startEngine(engine, loop.parallel, wish, hosts, chunksOf(loop, hosts));
  bool isAlive = loop.end.problem.empty();
  while (!isOver(loop) && (isAlive || !loop.unsettled.empty())) {
    if (isAlive) {
      isAlive = waitForHosts(loop, engine);
    } else {
      (void)poll(nullptr, 0, 100);  // only the state is waited for
    }
    settleResults(loop);
    loop.progress.seconds = std::chrono::duration<double>(Clock::now() - loop.start).count();
    showProgress(loop.display, loop.progress);
  }
  stopEngine(engine);
  removeTree(folder);
}

}  // namespace

LoopEnd convertOnHosts(const Options& options, StateHandle& state, const RunContext& context,
                       const std::vector<InputFile>& files, Summary& summary) {
  constexpr int kFruitlessRounds = 2;
  HostLoop loop{.options = options,
                .state = state,
                .context = context,
                .files = files,
                .summary = summary,
                .parallel = findTool("parallel"),
                .isOpen = std::vector<bool>(files.size(), true),
                .open = files.size(),
                .unsettled = {},
                .said = {},
                .progress = {},
                .display = {},
                .signals = listenToSignals(),
                .end = {}};
  if (loop.parallel.empty()) {
    loop.end.problem = "--sshlogin needs GNU parallel (Debian package parallel)";
    return loop.end;
  }
  loop.display.isLine = options.bar || isatty(STDERR_FILENO) == 1;
  loop.progress.files = static_cast<std::int64_t>(files.size());
  for (const InputFile& file : files) {
    loop.progress.bytes += file.size;
  }
  int fruitless = 0;
  for (int round = 1; loop.open > 0 && fruitless < kFruitlessRounds && !isOver(loop); ++round) {
    const std::size_t before = loop.open;
    runRound(loop, context.places.run + "/hosts" + std::to_string(round));
    fruitless = loop.open == before ? fruitless + 1 : 0;
  }
  endProgress(loop.display, loop.progress);
  return loop.end;
}

}  // namespace plenvorith
