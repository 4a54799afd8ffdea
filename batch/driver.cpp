#include "batch/driver.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iostream>
#include <map>
#include <optional>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "batch/duplicates.h"
#include "batch/hosts/host_loop.h"
#include "batch/inputs/find_files.h"
#include "batch/local/conversion_loop.h"
#include "batch/report/run_report.h"
#include "batch/report/summary.h"
#include "batch/state/ledger.h"
#include "batch/state/merge.h"
#include "batch/state/names.h"
#include "batch/state/output_folder.h"
#include "batch/state/own_outputs.h"
#include "batch/state/shard.h"
#include "batch/system/descriptor.h"
#include "batch/system/folder.h"
#include "batch/system/host_name.h"
#include "batch/system/signals.h"
#include "common/escaped_text.h"

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
  if (options.merge) {
    const bool hasShards = access(shardsFolder(places).c_str(), F_OK) == 0;
    return hasShards ? "" : "no shards in " + places.output;
  }
  if (found.files.empty()) {
    const bool hasOtherWork = options.prune || !options.exportPath.empty();
    for (const std::string& problem : found.problems) {
      say(problem);
    }
    if (!hasOtherWork) {
      return "no STEP file found";
    }
    const bool isStateThere = access(places.database.c_str(), F_OK) == 0;
    return isStateThere ? "" : "no state of earlier runs in " + places.output;
  }
  if (options.settings.to == "stp" && isSameFolder(places.output, found.base)) {
    return "the outputs would lie among the inputs, and be inputs of the next run: choose another "
           "DIR";
  }
  return {};
}

/// Notes that a file was converted in another way.
void noteDifference(const RunContext& context, const FileRecord& record, Summary& summary) {
  if (record.status != FileStatus::Converted) {
    return;
  }
  if (record.settings != context.settings) {
    ++summary.otherwiseBefore["other settings\n" + record.settings];
  } else if (record.program != context.program) {
    ++summary.otherwiseBefore["another program\n" + record.program];
  }
}

/// Takes the files out of the list that need no conversion, and notes what is known of all.
void dropUpToDate(StateHandle& state, const RunContext& context, bool isToTellOnly,
                  std::vector<InputFile>& files, Summary& summary) {
  const auto before = static_cast<std::int64_t>(files.size());
  std::vector<FileRecord> touched;
  std::erase_if(files, [&](const InputFile& file) {
    std::optional<FileRecord> record = findFile(state, file.path);
    bool isTouched = false;
    const bool isKept = record && isUpToDate(context, file.path, *record, isTouched);
    if (record && !isKept) {
      noteDifference(context, *record, summary);
    }
    if (isTouched) {
      touched.push_back(std::move(*record));
    }
    return isKept;
  });
  // Only spares the next run from reading them; it does without.
  if (!isToTellOnly && !touched.empty() && beginChanges(state)) {
    for (const FileRecord& record : touched) {
      (void)putFile(state, record);
    }
    (void)commitChanges(state);
  }
  summary.convertedBefore = before - static_cast<std::int64_t>(files.size());
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

/// Prunes, if that is asked for; false if it failed.
bool pruneIfAsked(const Options& options, const Places& places, StateHandle& state) {
  if (!options.prune) {
    return true;
  }
  const std::int64_t count = prune(state, places);
  if (count < 0) {
    say("the state cannot be pruned: " + stateProblem(state));
    return false;
  }
  std::cout << "Pruned: " << count << std::endl;
  return true;
}

/// Exports, if that is asked for, what the report has found out, too; false if it failed.
bool exportIfAsked(const Options& options, const Places& places, StateHandle& state) {
  if (options.exportPath.empty()) {
    return true;
  }
  if (!exportAll(options.exportPath, state, places)) {
    say(options.exportPath + " cannot be written");
    return false;
  }
  return true;
}

/// Notes the start of a run; false if the state takes nothing.
bool beginRun(StateHandle& state, const std::vector<std::string>& arguments,
              const FoundFiles& found, RunContext& context, RunRecord& run) {
  run.start = timeText();
  run.arguments = arguments;
  run.program = context.program;
  run.host = hostName();
  run.base = context.base;
  run.leftOut = leftOutText(found);
  run.id = putRun(state, run);
  context.run = run.id;
  return run.id != 0;
}

/// Converts files here or on hosts.
LoopEnd convertSome(const Options& options, StateHandle& state, const RunContext& context,
                    const std::vector<InputFile>& files, Summary& summary) {
  return options.sshlogin.empty() ? convertFiles(options, state, context, files, summary)
                                  : convertOnHosts(options, state, context, files, summary);
}

/// Converts files, those with the same bytes once. Another program may look at more than the bytes.
LoopEnd convertEachOnce(const Options& options, StateHandle& state, const RunContext& context,
                        std::vector<InputFile> files, Summary& summary) {
  std::vector<Duplicate> duplicates;
  if (options.settings.program.empty()) {
    duplicates = takeDuplicates(files);
  }
  sortForConversion(files);
  LoopEnd end = convertSome(options, state, context, files, summary);
  if (duplicates.empty() || end.signal != 0 || !end.problem.empty()) {
    return end;
  }
  const Descriptor signals = listenToSignals({SIGHUP, SIGINT, SIGTERM});
  const std::vector<InputFile> rest =
      settleDuplicates(state, context, duplicates, signals.get(), summary);
  end.signal = nextSignal(signals.get());
  return end.signal != 0 || rest.empty() ? end
                                         : convertSome(options, state, context, rest, summary);
}

/// Converts what there is to convert and tells what became of it.
int convertAll(const Options& options, const std::vector<std::string>& arguments,
               StateHandle& state, RunContext& context, const FoundFiles& found, Summary& summary) {
  const auto start = std::chrono::steady_clock::now();
  RunRecord run;
  if (!beginRun(state, arguments, found, context, run)) {
    return refuse(context.places.database + ": " + stateProblem(state));
  }
  const LoopEnd end = convertEachOnce(options, state, context, found.files, summary);
  run.end = timeText();
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.result = end.signal == 0 && end.problem.empty() ? "finished" : "interrupted";
  (void)putRun(state, run);  // the files tell the same

  if (end.signal != 0) {
    std::cerr << "Interrupted; --resume goes on from here" << std::endl;
  }
  if (!end.problem.empty()) {
    say(end.problem);
    if (!options.sshlogin.empty() && summary.converted + countOf(summary.failures) == 0) {
      return kNothingBegun;  // no host can convert
    }
  }
  const bool isPruned = end.signal != 0 || pruneIfAsked(options, context.places, state);
  bool isAllWell = printSummary(summary, found, run.seconds, context.places.state);
  // Whoever interrupts a run does not wait for tools, and shards have one report together.
  Options reported = options;
  if (end.signal != 0) {
    reported.checks = false;
    reported.pictures = false;
  }
  isAllWell = (options.shard || reportState(reported, state, context.places)) && isAllWell;
  const bool isOtherDone =
      end.signal != 0 || (exportIfAsked(options, context.places, state) && isPruned);
  if (end.signal != 0) {
    return 128 + end.signal;
  }
  return isAllWell && isOtherDone && end.problem.empty() ? 0 : kSomeFailed;
}

/// Tells what has become of the files of a division that are not converted; gives their number.
std::int64_t tellUnconverted(const Division& division, StateHandle& state) {
  std::int64_t failed = 0;
  std::map<std::size_t, std::int64_t> untried;  // by shard
  std::map<std::size_t, std::int64_t> all;
  const std::vector<std::size_t> shards = shardsOf(division);
  for (std::size_t i = 0; i < shards.size(); ++i) {
    const std::optional<FileRecord> record = findFile(state, division.files[i].path);
    failed += record && record->status != FileStatus::Converted ? 1 : 0;
    untried[shards[i]] += record ? 0 : 1;
    ++all[shards[i]];
  }
  std::erase_if(untried, [](const auto& entry) { return entry.second == 0; });
  if (failed > 0) {
    std::cout << "Failed: " << failed << std::endl;
  }
  std::int64_t open = failed;
  for (const auto& [shard, count] : untried) {
    std::cout << "Never tried: " << count << " of shard " << shard << '/' << division.count
              << (count == all[shard] ? ", which is missing" : ", which did not end") << std::endl;
    open += count;
  }
  return open;
}

/// Makes one state of those of the shards, and the report of it.
int mergeAll(const Options& options, const Places& places, StateHandle& state) {
  const std::optional<Division> division = readDivision(divisionPath(places));
  const Merged merged = mergeShards(state, places);
  std::cout << "Merged: " << merged.shards << " shards, " << merged.files << " files" << std::endl;
  for (const std::string& problem : merged.problems) {
    say(problem);
  }
  const std::int64_t open = division ? tellUnconverted(*division, state) : 0;
  const bool isPruned = pruneIfAsked(options, places, state);
  const bool isReported = reportState(options, state, places);
  const bool isOtherDone = exportIfAsked(options, places, state) && isPruned;
  return merged.problems.empty() && open == 0 && isOtherDone && isReported ? 0 : kSomeFailed;
}

/// Does what there is to do, with the output folder taken and its state open.
int work(const Options& options, const std::vector<std::string>& arguments, StateHandle* state,
         RunContext& context, FoundFiles& found) {
  if (options.merge) {
    return mergeAll(options, context.places, *state);
  }
  if (options.inputs.empty() && !options.listing) {
    const bool isPruned = pruneIfAsked(options, context.places, *state);
    const bool isReported = reportState(options, *state, context.places);
    return exportIfAsked(options, context.places, *state) && isPruned && isReported ? 0
                                                                                    : kSomeFailed;
  }
  Summary summary;
  if (options.resume && state != nullptr) {
    dropUpToDate(*state, context, options.dryRun, found.files, summary);
  }
  summary.files = static_cast<std::int64_t>(found.files.size());
  if (options.dryRun) {
    sortForConversion(found.files);
  }
  return options.dryRun ? tellPlan(options, context.places, found, summary)
                        : convertAll(options, arguments, *state, context, found, summary);
}

/// Makes this process the owner of the output folder and opens its state; says what is in the way.
/// A run that only tells what it would do owns nothing, and looks at the state if there is one.
std::string openFolder(const Options& options, RunContext& context, OwnedFolder& owned,
                       State& state) {
  const std::string& database = context.places.database;
  std::string problem;
  if (options.dryRun) {
    if (access(database.c_str(), F_OK) == 0) {
      state = openState(database, problem, StateUse::Look);
    }
    return problem;
  }
  problem = takeOutputFolder(options, context, owned);
  if (problem.empty()) {
    // A disk without locks, as shards may have, is merged without any.
    const bool isAlone = options.shard || owned.output.get() < 0;
    state = openState(database, problem, isAlone ? StateUse::Alone : StateUse::Write);
  }
  return problem;
}

/// Prints what the last conversion of an input said.
int printTranscript(const Options& options) {
  const Places places = placesIn(absolutePath(options.output));
  const std::string input = absolutePath(options.transcriptOf);
  if (access(places.database.c_str(), F_OK) != 0) {
    return refuse("no state of earlier runs in " + places.output);
  }
  std::string problem;
  const State state = openState(places.database, problem, StateUse::Look);
  if (!state) {
    return refuse(problem);
  }
  std::optional<std::string> transcript = findTranscript(*state, input);
  const std::vector<RunRecord> runs = allRuns(*state);
  if (!transcript && !runs.empty()) {  // as the end of a run names it
    transcript = findTranscript(*state, runs.back().base + options.transcriptOf);
  }
  if (!transcript) {
    say("no transcript of " + input);
    return kSomeFailed;
  }
  return writeAll(STDOUT_FILENO, *transcript) ? 0 : kSomeFailed;
}

}  // namespace

int runDriver(const Options& given, const std::vector<std::string>& arguments) {
  if (!given.transcriptOf.empty()) {
    return printTranscript(given);
  }
  Options options = given;
  std::string& program = options.settings.program;
  if (!program.empty()) {
    if (!isProgram(program)) {
      return refuse("no program " + program);
    }
    program = absolutePath(program);
  }
  const Places all = placesIn(absolutePath(options.output));
  const Places places = options.shard ? placesOfShard(all, *options.shard) : all;
  FoundFiles found = findFiles(options, places.output);
  leaveOut(found, "outputs of earlier runs", findOwnOutputs(all, found.files));
  RunContext context{
      places, found.base,         settingsText(options.settings), programText(options.settings),
      0,      options.settings.to};
  std::string problem = objection(options, places, found);
  OwnedFolder owned;
  State state;
  if (problem.empty()) {
    problem = openFolder(options, context, owned, state);
  }
  if (problem.empty() && options.shard) {
    problem = becomeShard(options, context, state.get(), found.files);
  }
  if (problem.empty() && !options.shard && state != nullptr) {
    problem = findCollision(*state, context, found.files);
  }
  if (!problem.empty()) {
    return refuse(problem);
  }
  const int status = work(options, arguments, state.get(), context, found);
  state.reset();
  return status;
}

}  // namespace plenvorith
