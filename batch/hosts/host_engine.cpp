#include "batch/hosts/host_engine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "batch/local/pool.h"
#include "batch/records/job.h"
#include "batch/state/names.h"
#include "batch/system/folder.h"
#include "batch/system/lines.h"
#include "batch/system/process.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

// The worker's program replaces the shell, so that it hears when nobody reads its results.
constexpr const char* kShared = "exec \"$p\" --worker <\"$PLENVORITH_RUN/{}.jobs\"";

// The results travel with the outputs, as the standard output, which GNU parallel puts into a file: a
// call of ssh takes longer than many a conversion, and to fetch files and remove them takes four. The
// results come last: where they are, all is. Here, on ":", GNU parallel sends nothing.
constexpr const char* kTransferred = R"(w=$PWD
trap 'cd "$w" && rm -rf {} {}.tar; rmdir "$w" 2>/dev/null' 0
[ -e {}.tar ] || cp "$PLENVORITH_RUN/{}.tar" .
tar -xf {}.tar && cd {} && "$p" --worker <jobs >results
cd "$w" && tar --format=posix -cf - {}/made {}/transcripts {}/results)";

constexpr std::string_view kPacked = ".out.tar";

/// Where a chunk's files stand, on its way to a host and back.
std::string chunkFolder(const HostEngine& engine, const std::string& chunk) {
  return engine.folder + '/' + chunk;
}

/// Where what jobs make is when it has come.
std::string baseFolder(const HostEngine& engine, const std::string& chunk) {
  return engine.transfer ? chunkFolder(engine, chunk) : engine.folder;
}

std::string nameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

/// A job as a host gets it: with transfer, its paths are relative to the folder of the chunk.
Job jobFor(const HostEngine& engine, const std::string& chunk, std::size_t file) {
  const std::string number = std::to_string(file);
  const std::string& input = engine.files[file].path;
  const std::string base = engine.transfer ? "" : engine.folder + '/';
  Job job;
  job.id = static_cast<std::int64_t>(file);
  job.input = engine.transfer ? "in/" + number + '/' + nameOf(input) : input;
  // A folder that is removed again costs time on some disks: one for each file is enough.
  job.outFolder = base + "made/" + number;
  job.temporaryFolder = engine.transfer ? "tmp" : chunkFolder(engine, chunk) + ".tmp";
  job.outputName = workNameFor(input, engine.settings);
  job.transcript = base + "transcripts/" + number;
  job.settings = engine.settings;
  return job;
}

bool writeJobs(HostEngine& engine, const std::string& chunk, const std::string& path,
               const std::vector<std::size_t>& files) {
  std::ofstream jobs(path, std::ios::binary);
  for (const std::size_t file : files) {
    const Job job = jobFor(engine, chunk, file);
    engine.open[job.id] = job.outputName;
    jobs << lineFrom(job) << '\n';
  }
  jobs.close();
  return jobs.good();
}

/// Packs the jobs of a chunk and their inputs. One that cannot be read is missed by the worker.
bool packChunk(HostEngine& engine, const std::string& tar, const std::string& chunk,
               const std::vector<std::size_t>& files) {
  const std::string folder = chunkFolder(engine, chunk);
  bool isMade = makeFolders(folder + "/made") && makeFolders(folder + "/transcripts") &&
                writeJobs(engine, chunk, folder + "/jobs", files);
  for (const std::size_t file : files) {
    const std::string place = folder + "/in/" + std::to_string(file);
    const std::string& input = engine.files[file].path;
    isMade = isMade && makeFolders(place) &&
             symlink(input.c_str(), (place + '/' + nameOf(input)).c_str()) == 0;
  }
  ToolStart start;
  start.arguments = {tar, "--format=posix", "-chf", chunk + ".tar", chunk};
  start.folder = engine.folder;
  // Its status is that of the worst input.
  (void)runTool(start, std::chrono::hours(24));
  removeTree(folder);
  engine.chunks.insert(chunk);
  return isMade && access((folder + ".tar").c_str(), F_OK) == 0;
}

/// The result in a line, of a job that had none yet.
std::optional<Finished> finishedFrom(HostEngine& engine, const std::string& chunk,
                                     const std::string& line) {
  std::optional<JobResult> result = resultFrom(line, engine.open);
  if (!result) {
    return std::nullopt;
  }
  const std::string number = std::to_string(result->id);
  const std::string base = baseFolder(engine, chunk);
  Finished finished{engine.files[static_cast<std::size_t>(result->id)].path,
                    base + "/made/" + number, base + "/transcripts/" + number,
                    engine.open[result->id], std::move(*result)};
  engine.open.erase(finished.result.id);
  return finished;
}

/// Whether nothing in what has been unpacked leads out of it: a host can pack what it likes.
bool isPlain(const std::string& folder) {
  std::error_code error;
  for (auto entry = std::filesystem::recursive_directory_iterator(folder, error);
       !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
    const std::filesystem::file_type type = entry->symlink_status(error).type();
    if (type != std::filesystem::file_type::regular &&
        type != std::filesystem::file_type::directory) {
      return false;
    }
  }
  return !error;
}

/// Unpacks what has come back of a chunk and gives its results.
std::vector<Finished> unpackChunk(HostEngine& engine, const std::string& chunk) {
  std::vector<Finished> all;
  const std::string folder = chunkFolder(engine, chunk);
  ToolStart start;
  // Nothing but the chunk's own folder, which was removed when it was sent, is made.
  start.arguments = {findTool("tar"), "-xf", chunk + ".out.tar", chunk};
  start.folder = engine.folder;
  const bool isWhole = runTool(start, std::chrono::hours(24)).succeeded && isPlain(folder);
  std::ifstream errors(folder + ".out.tar.err", std::ios::binary);
  for (std::string line; !isWhole && std::getline(errors, line);) {
    std::cerr << printable(line) << std::endl;
  }
  for (const char* const extension : {".tar", ".out.tar", ".out.tar.err", ".out.tar.seq"}) {
    (void)unlink((folder + extension).c_str());
  }
  if (!isWhole) {
    return all;
  }
  std::ifstream results(folder + "/results", std::ios::binary);
  for (std::string line; std::getline(results, line);) {
    if (std::optional<Finished> finished = finishedFrom(engine, chunk, line)) {
      all.push_back(std::move(*finished));
    }
  }
  return all;
}

}  // namespace

std::vector<std::string> engineOptions(const std::vector<Host>& hosts, bool transfer) {
  std::vector<std::string> options = {
      "--plain", "--will-cite",      "--termseq", "TERM,5000,KILL,25",
      "--env",   "PLENVORITH_BATCH", "--env",     "PLENVORITH_RUN"};
  for (const Host& host : hosts) {
    options.emplace_back("--sshlogin");
    options.push_back(std::to_string(host.jobs) + '/' + host.login);
  }
  if (transfer) {
    for (const char* const option :
         {"--workdir", "...", "--transferfile", "{}.tar", "--results", "{}.out.tar", "--files"}) {
      options.emplace_back(option);
    }
  } else {
    options.emplace_back("--line-buffer");
  }
  options.push_back(std::string(kFindProgram) + (transfer ? kTransferred : kShared));
  return options;
}

std::optional<std::chrono::seconds> patienceForHosts(const HostEngine& engine) {
  std::chrono::seconds longest(0);
  for (const std::vector<std::size_t>& chunk : engine.division) {
    std::chrono::seconds all(0);
    for (const std::size_t file : chunk) {
      const auto patience = patienceFor(engine.settings, engine.files[file]);
      if (!patience) {
        return std::nullopt;
      }
      all = engine.transfer ? all + *patience : std::max(all, *patience);
    }
    longest = std::max(longest, all);
  }
  return longest;
}

std::string startEngine(HostEngine& engine, const std::string& parallel, const HostWish& wish,
                        const std::vector<Host>& hosts,
                        const std::vector<std::vector<std::size_t>>& chunks) {
  engine.division = chunks;
  std::optional<Pipe> numbers = makePipe();
  if (!numbers) {
    return "GNU parallel cannot be started";
  }
  (void)fcntl(numbers->write.get(), F_SETFL, O_NONBLOCK);  // what does not fit in is written later
  engine.numbersRead = std::move(numbers->read);
  engine.numbersWritten = std::move(numbers->write);
  ToolStart start;
  start.arguments = engineOptions(hosts, engine.transfer);
  start.arguments.insert(start.arguments.begin(), parallel);
  start.environment = hostEnvironment(wish);
  start.environment.push_back("TMPDIR=" + engine.folder);  // goes with what it leaves there
  start.folder = engine.folder;
  start.errors = ToolErrors::Shared;
  start.endSignal = SIGINT;  // ends what runs on the hosts, too
  start.input = engine.numbersRead.get();
  engine.parallel = startTool(start, std::chrono::hours(24));
  return engine.parallel.process > 0 ? "" : "GNU parallel cannot be started";
}

bool hasUnsent(const HostEngine& engine) {
  return engine.numbersWritten.isOpen();
}

std::string sendChunk(HostEngine& engine) {
  if (engine.sent < engine.division.size()) {
    const std::string chunk = std::to_string(engine.sent);
    const std::vector<std::size_t>& files = engine.division[engine.sent];
    const bool isMade = engine.transfer
                            ? packChunk(engine, findTool("tar"), chunk, files)
                            : writeJobs(engine, chunk, chunkFolder(engine, chunk) + ".jobs", files);
    if (!isMade) {
      return engine.folder + " cannot be written";
    }
    engine.numbers += chunk + '\n';
    ++engine.sent;
  }
  const ssize_t written =
      write(engine.numbersWritten.get(), engine.numbers.data(), engine.numbers.size());
  engine.numbers.erase(0, static_cast<std::size_t>(std::max(written, ssize_t{0})));
  if (engine.sent == engine.division.size() && engine.numbers.empty()) {
    engine.numbersWritten.close();
  }
  return {};
}

std::vector<Finished> collectFromHosts(HostEngine& engine, bool& isAlive) {
  isAlive = readMore(engine.parallel.output.get(), engine.pending);
  std::vector<Finished> all;
  for (const std::string& line : takeLines(engine.pending)) {
    if (engine.transfer) {
      const std::string chunk = line.substr(0, line.find(kPacked));
      if (line.ends_with(kPacked) && engine.chunks.erase(chunk) == 1) {
        std::ranges::move(unpackChunk(engine, chunk), std::back_inserter(all));
      }
    } else if (std::optional<Finished> finished = finishedFrom(engine, "", line)) {
      all.push_back(std::move(*finished));
    }
  }
  return all;
}

std::vector<Finished> stopEngine(HostEngine& engine) {
  std::vector<Finished> all;
  if (engine.parallel.process <= 0) {
    return all;
  }
  (void)kill(engine.parallel.process, SIGINT);
  // It ends the jobs, on the hosts as well, and insists after five seconds.
  constexpr int kPatience = 10000;  // milliseconds
  constexpr int kLook = 100;
  bool isAlive = true;
  for (int waited = 0; waited < kPatience;) {
    const bool hasEnded = waitpid(engine.parallel.process, nullptr, WNOHANG) != 0;
    pollfd event{isAlive ? engine.parallel.output.get() : -1, POLLIN, 0};
    if (poll(&event, 1, hasEnded ? 0 : kLook) > 0) {
      std::vector<Finished> some = collectFromHosts(engine, isAlive);
      std::move(some.begin(), some.end(), std::back_inserter(all));
    } else if (hasEnded) {
      break;
    } else {
      waited += kLook;
    }
  }
  endTool(engine.parallel);
  return all;
}

}  // namespace plenvorith
