#include "batch/driver.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <iostream>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/conversion_loop.h"
#include "batch/descriptor.h"
#include "batch/export.h"
#include "batch/find_files.h"
#include "batch/folder.h"
#include "batch/ledger.h"
#include "batch/names.h"
#include "batch/summary.h"
#include "batch/text.h"

namespace plenvorith {
namespace {

constexpr int kSomeFailed = 1;
constexpr int kNothingBegun = 2;

void say(const std::string& text) {
  std::cerr << "plenvorith-batch: " << printable(text) << std::endl;
}

int refuse(const std::string& text) {
  say(text);
  return kNothingBegun;
}

std::string timeText() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::array<char, 32> text{};
  (void)std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

std::string hostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

bool isSameFolder(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool isProgram(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

/// What is wrong with the inputs that were found; empty if nothing.
std::string objection(const Options& options, const Places& places, const FoundFiles& found) {
  if (!found.wrongUse.empty()) {
    return found.wrongUse;
  }
  const bool hasOtherWork = options.prune || !options.exportPath.empty();
  if (found.files.empty() && !hasOtherWork) {
    for (const std::string& problem : found.problems) {
      say(problem);
    }
    return "no STEP file found";
  }
  if (options.settings.to == "stp" && isSameFolder(places.output, found.base)) {
    return "the outputs would lie among the inputs, and be inputs of the next run: choose another "
           "DIR";
  }
  return {};
}

/// Takes the output folder for this run alone; says what is in the way.
std::string takeOutputFolder(const Places& places, Descriptor& lock) {
  if (!makeFolders(places.state)) {
    return places.state + ": " + strerror(errno);
  }
  constexpr mode_t kRights = 0666;
  lock = Descriptor(open(places.lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kRights));
  if (!lock.isOpen()) {
    return places.lock + ": " + strerror(errno);
  }
  if (flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
    return "another run is writing to " + places.output;
  }
  removeTree(places.run);
  return makeFolders(places.run) ? std::string() : places.run + ": " + strerror(errno);
}

/// Takes the files out of the list that need no conversion; gives their number.
std::int64_t dropUpToDate(StateHandle& state, const RunContext& context,
                          std::vector<InputFile>& files) {
  const auto before = static_cast<std::int64_t>(files.size());
  std::vector<FileRecord> touched;
  std::erase_if(files, [&](const InputFile& file) {
    std::optional<FileRecord> record = findFile(state, file.path);
    bool isTouched = false;
    const bool isKept = record && isUpToDate(context, file.path, *record, isTouched);
    if (isTouched) {
      touched.push_back(std::move(*record));
    }
    return isKept;
  });
  // Only spares the next run from reading them; it does without.
  if (!touched.empty() && beginChanges(state)) {
    for (const FileRecord& record : touched) {
      (void)putFile(state, record);
    }
    (void)commitChanges(state);
  }
  return before - static_cast<std::int64_t>(files.size());
}

int tellPlan(const Options& options, const Places& places, const FoundFiles& found,
             const Summary& summary) {
  for (const InputFile& file : found.files) {
    const std::string name = nameBelow(found.base, file.path);
    std::cout << "would convert: " << printable(file.path) << " to "
              << printable(places.output + '/' + name + '.' + options.settings.to) << std::endl;
  }
  printPlan(summary, found);
  return found.problems.empty() ? 0 : kSomeFailed;
}

/// What follows the conversions: pruning and exporting. False if some of it failed.
bool doOtherWork(const Options& options, const Places& places, StateHandle& state) {
  bool isDone = true;
  if (options.prune) {
    const std::int64_t count = prune(state, places);
    isDone = count >= 0;
    if (isDone) {
      std::cout << "Pruned: " << count << std::endl;
    } else {
      say("the state cannot be pruned: " + stateProblem(state));
    }
  }
  if (!options.exportPath.empty() && !exportState(state, options.exportPath)) {
    say(options.exportPath + " cannot be written");
    isDone = false;
  }
  return isDone;
}

/// Notes the start of a run; false if the state takes nothing.
bool beginRun(StateHandle& state, const std::vector<std::string>& arguments, RunContext& context,
              RunRecord& run) {
  run.start = timeText();
  run.arguments = arguments;
  run.program = context.program;
  run.host = hostName();
  run.base = context.base;
  run.id = putRun(state, run);
  context.run = run.id;
  return run.id != 0;
}

/// Converts what there is to convert and tells what became of it.
int convertAll(const Options& options, const std::vector<std::string>& arguments,
               StateHandle& state, RunContext& context, const FoundFiles& found, Summary& summary) {
  const auto start = std::chrono::steady_clock::now();
  RunRecord run;
  if (!beginRun(state, arguments, context, run)) {
    return refuse(context.places.database + ": " + stateProblem(state));
  }
  const LoopEnd end = convertFiles(options, state, context, found.files, summary);
  run.end = timeText();
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.result = end.signal == 0 && end.problem.empty() ? "finished" : "interrupted";
  (void)putRun(state, run);  // the files tell the same

  if (end.signal != 0) {
    std::cerr << "Interrupted; --resume goes on from here" << std::endl;
  }
  if (!end.problem.empty()) {
    say(end.problem);
  }
  const bool isOtherDone = end.signal != 0 || doOtherWork(options, context.places, state);
  const bool isAllWell = printSummary(summary, found, run.seconds, context.places.state);
  if (end.signal != 0) {
    return 128 + end.signal;
  }
  return isAllWell && isOtherDone && end.problem.empty() ? 0 : kSomeFailed;
}

}  // namespace

int runDriver(const Options& given, const std::vector<std::string>& arguments) {
  Options options = given;
  std::string& program = options.settings.program;
  if (!program.empty()) {
    if (!isProgram(program)) {
      return refuse("no program " + program);
    }
    program = absolutePath(program);
  }
  const Places places = placesIn(absolutePath(options.output));
  FoundFiles found = findFiles(options, places.output);
  const std::string problem = objection(options, places, found);
  if (!problem.empty()) {
    return refuse(problem);
  }
  const bool isStateThere = access(places.database.c_str(), F_OK) == 0;
  if (found.files.empty() && !isStateThere) {
    return refuse("no state of earlier runs in " + places.output);
  }

  Descriptor lock;
  State state;
  if (!options.dryRun || (options.resume && isStateThere)) {
    std::string obstacle = takeOutputFolder(places, lock);
    if (obstacle.empty()) {
      state = openState(places.database, obstacle);
    }
    if (!state) {
      return refuse(obstacle);
    }
  }
  RunContext context{places, found.base, settingsText(options.settings),
                     programText(options.settings), 0};
  Summary summary;
  if (options.resume && state) {
    summary.convertedBefore = dropUpToDate(*state, context, found.files);
  }
  summary.files = static_cast<std::int64_t>(found.files.size());
  sortForConversion(found.files);
  const int status = options.dryRun
                         ? tellPlan(options, places, found, summary)
                         : convertAll(options, arguments, *state, context, found, summary);
  state.reset();
  removeTree(places.run);
  return status;
}

}  // namespace plenvorith
