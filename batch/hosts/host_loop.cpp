#include "batch/hosts/host_loop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include <poll.h>

#include "batch/hosts/host_engine.h"
#include "batch/hosts/hosts.h"
#include "batch/report/progress.h"
#include "batch/state/division.h"
#include "batch/system/folder.h"
#include "batch/version.h"

namespace plenvorith {
namespace {

/// All that changes while files are converted.
struct HostLoop {
  Conversions run;
  std::string parallel;              ///< path of GNU parallel
  std::vector<bool> isOpen;          ///< for each file, whether it has no result yet
  std::size_t open = 0;              ///< the number of these
  std::set<std::string> said;        ///< about hosts that are left out
  std::vector<std::string> emptied;  ///< folders whose outputs have been taken
};

std::string ownPath() {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

HostWish wishOf(const HostLoop& loop, const std::string& folder) {
  return {.logins = loop.run.options.sshlogin,
          .jobs = loop.run.options.jobsText,
          .program = ownPath(),
          .version = "plenvorith-batch " + versionText(),
          .folder = folder,
          .transfer = loop.run.options.transfer};
}

/// The hosts that can convert now; says once of each other one why it cannot.
std::vector<Host> askHosts(HostLoop& loop, const HostWish& wish) {
  HostCheck check = checkHosts(loop.parallel, wish);
  for (const std::string& line : check.leftOut) {
    if (loop.said.insert(line).second) {
      showMessage(loop.run.display, line);
    }
  }
  if (check.hosts.empty()) {
    loop.run.end.problem =
        "no host can convert" + (check.problem.empty() ? "" : ": " + check.problem);
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
  for (std::size_t file = 0; file < loop.run.files.size(); ++file) {
    if (loop.isOpen[file]) {
      left.push_back(file);
      sizes.push_back(static_cast<std::uint64_t>(loop.run.files[file].size));
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

/// Settles what has come.
void settleSome(HostLoop& loop, bool isUrgent) {
  for (Finished& finished : settleResults(loop.run, isUrgent)) {
    loop.emptied.push_back(std::move(finished.outFolder));
  }
  constexpr int kPatience = 50;
  if (loop.run.refusals > kPatience) {
    giveUpOnState(loop.run);
  }
}

/// Removes folders that are no longer needed, for a moment: it takes long on some disks, and results
/// that are not settled are lost if this process is killed.
void removeSome(HostLoop& loop) {
  constexpr std::chrono::milliseconds kMoment(20);
  const auto end = std::chrono::steady_clock::now() + kMoment;
  while (!loop.emptied.empty() && std::chrono::steady_clock::now() < end) {
    removeTree(loop.emptied.back());
    loop.emptied.pop_back();
  }
}

/// Takes results; a host that was thought to be lost may send one late, when there is another.
void addResults(HostLoop& loop, std::vector<Finished> all) {
  for (Finished& finished : all) {
    const auto file = static_cast<std::size_t>(finished.result.id);
    if (loop.isOpen[file]) {
      loop.isOpen[file] = false;
      --loop.open;
      loop.run.unsettled.push_back(std::move(finished));
    }
  }
}

/// Waits until the hosts have sent something, a signal comes or the progress is to be shown. Gives
/// whether more may come from the hosts.
bool waitForHosts(HostLoop& loop, HostEngine& engine) {
  const bool hasWork = !loop.emptied.empty() || engine.sent < engine.division.size();
  const int patience = hasWork ? 0 : 200;  // milliseconds
  pollfd events[] = {{loop.run.signals.get(), POLLIN, 0},
                     {engine.parallel.output.get(), POLLIN, 0}};
  if (poll(events, 2, patience) <= 0) {
    removeSome(loop);
    return true;
  }
  takeSignal(loop.run);
  bool isAlive = true;
  if (events[1].revents != 0) {
    addResults(loop, collectFromHosts(engine, isAlive));
  }
  return isAlive;
}

/// Sends out all that is left, once.
void runRound(HostLoop& loop, const std::string& folder) {
  if (!makeFolders(folder) || !std::ofstream(folder + "/here")) {
    loop.run.end.problem = folder + " cannot be written";
    return;
  }
  const HostWish wish = wishOf(loop, folder);
  const std::vector<Host> hosts = askHosts(loop, wish);
  if (hosts.empty()) {
    return;
  }
  HostEngine engine{loop.run.context,
                    loop.run.options.settings,
                    loop.run.files,
                    folder,
                    loop.run.options.transfer,
                    {},
                    {},
                    {},
                    {},
                    {},
                    0,
                    {},
                    {},
                    {}};
  loop.run.end.problem = startEngine(engine, loop.parallel, wish, hosts, chunksOf(loop, hosts));
  const std::optional<std::chrono::seconds> patience = patienceForHosts(engine);
  auto heardAt = std::chrono::steady_clock::now();
  bool isAlive = loop.run.end.problem.empty();
  while (!isOver(loop.run) && (isAlive || !loop.run.unsettled.empty())) {
    if (isAlive && hasUnsent(engine)) {
      loop.run.end.problem = sendChunk(engine);
    }
    if (isAlive) {
      const std::size_t before = loop.open;
      isAlive = waitForHosts(loop, engine);
      const auto now = std::chrono::steady_clock::now();
      heardAt = loop.open == before && !hasUnsent(engine) ? heardAt : now;
      if (patience && now - heardAt > *patience) {
        showMessage(loop.run.display, "no host answers; what is left goes out again");
        break;
      }
    } else {
      (void)poll(nullptr, 0, 100);  // only the state is waited for
    }
    settleSome(loop, !isAlive);
    showConversions(loop.run);
  }
  addResults(loop, stopEngine(engine));
  settleSome(loop, true);
  loop.emptied.clear();
  removeTree(folder);
}

}  // namespace

LoopEnd convertOnHosts(const Options& options, StateHandle& state, const RunContext& context,
                       const std::vector<InputFile>& files, Summary& summary) {
  constexpr int kFruitlessRounds = 2;
  HostLoop loop{.run = beginConversions(options, state, context, files, summary),
                .parallel = findTool("parallel"),
                .isOpen = std::vector<bool>(files.size(), true),
                .open = files.size(),
                .said = {},
                .emptied = {}};
  if (loop.parallel.empty()) {
    loop.run.end.problem = "--sshlogin needs GNU parallel (Debian packages parallel, bzip2)";
    return loop.run.end;
  }
  int fruitless = 0;
  for (int round = 1; loop.open > 0 && fruitless < kFruitlessRounds && !isOver(loop.run); ++round) {
    const std::size_t before = loop.open;
    runRound(loop, context.places.run + "/hosts" + std::to_string(round));
    fruitless = loop.open == before ? fruitless + 1 : 0;
  }
  endConversions(loop.run);
  return loop.run.end;
}

}  // namespace plenvorith
