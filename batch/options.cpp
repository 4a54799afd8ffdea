#include "batch/options.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <string_view>
#include <thread>

#include <CLI/CLI.hpp>

#include "batch/version.h"
#include "common/ascii.h"

namespace plenvorith {
namespace {

constexpr const char* kHelp = R"(usage: plenvorith-batch [OPTION]... INPUT... -o DIR

Converts every STEP file (.stp .step .p21) named, or found in the folders named.
INPUT x/a.stp becomes DIR/x/a.stp.stl: the path below the deepest folder that
holds all INPUTs, then the file's full name, then the new extension.

  -o, --output DIR       where the outputs go
      --base DIR         the folder that the paths below DIR begin in
      --files-from FILE  more INPUTs, one a line or each ended by a NUL; "-" is
                         standard input
      --include GLOB     take only files whose name, or path, matches
      --exclude GLOB     leave out files and folders whose name, or path, matches
      --follow           look into folders that are links
      --to stl|stp       kind of output (stl)
      --deflection D     linear deflection of the mesh (0.1)
      --split            one file for each shape
      --parts            with --split: list number, path, name, kind, triangles and
                         placement of each shape in OUTPUT.parts.json
      --as-is            do not rewrite each file for the converter first, as
                         plenvorith-prepare does
      --resume           leave out what is converted already
      --prune            remove the outputs of inputs that have vanished
      --dry-run          tell what would be done; change nothing
      --jobs N           files at once: 4, 50%, +1 or -1 (one for each core)
      --time-limit T     longest time for one file: 90, 5m, 2h, 0 for ever (1h)
      --memory-limit M   address space for one file: 800M, 4G, 0 for all (0)
      --memory-free M    begin no file while less memory is free (1G)
      --transcript FILE  print what the last conversion of an input said
      --export FILE      write what is known of all files, as .csv or .json
      --check            have plenvorith-check look for parts with problems, for
                         the report and --export
      --thumbnails       have f3d draw every mesh, for the report
      --sshlogin HOSTS   hosts to convert on, as for GNU parallel; ":" is this one
      --transfer         send inputs to the hosts and bring outputs back: they need
                         not see the same files
      --shard K/N        convert the K-th of N parts; for batch systems
      --merge            make one state and one report of those of the shards
      --bar              progress line, even if standard error is no terminal
      --program FILE     run this instead of the converter that is built in
      --version          print version and kernel release
  -h, --help             this text

--export, --prune, --merge and --transcript need no INPUT.

Exit status: 0 all files are converted; 1 some are not, or could not be looked
at, or a report or table not written; 2 nothing was begun; 129, 130 and 143 ended
by SIGHUP, SIGINT and SIGTERM.)";

std::optional<std::int64_t> numberFrom(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || !isDigit(text.front()) || stop != end || error != std::errc()) {
    return std::nullopt;
  }
  return number;
}

/// The number in front of a unit's letter, times the unit; nothing if that is out of range.
std::optional<std::int64_t> scaled(std::string_view digits, std::int64_t unit) {
  const std::optional<std::int64_t> number = numberFrom(digits);
  constexpr std::int64_t kLargest = std::int64_t{1} << 60;
  if (!number || *number > kLargest / unit) {
    return std::nullopt;
  }
  return *number * unit;
}

std::string_view withoutLast(const std::string& text) {
  return std::string_view(text).substr(0, text.size() - 1);
}

/// The texts of options whose values are more than texts.
struct RawValues {
  std::optional<std::string> jobs, timeLimit, memoryLimit, memoryFree, shard;
  bool prepare = false;
  bool asIs = false;
  bool help = false;
  bool version = false;
};

/// An option that may be given several times. Its values are taken as they are: what the library
/// makes of a list would leave out "{}".
CLI::Option* addTexts(CLI::App& app, const char* name, std::vector<std::string>& texts) {
  return app
      .add_option(name,
                  [&texts](const CLI::results_t& results) {
                    texts = results;
                    return true;
                  })
      ->take_all();
}

// The library takes "[a,b]" for a list of two values. No text begins with a bracket behind this.
constexpr char kGuard = '\x01';

std::vector<std::string> guarded(int argc, char** argv) {
  std::vector<std::string> arguments(argv, argv + argc);
  for (std::string& argument : arguments) {
    if (argument.starts_with('[') || argument.starts_with(kGuard)) {
      argument.insert(0, 1, kGuard);
    }
  }
  return arguments;
}

std::string withoutGuard(const std::string& text) {
  return text.starts_with(kGuard) ? text.substr(1) : text;
}

void addOptions(CLI::App& app, Options& options, RawValues& raw) {
  app.set_help_flag();
  app.option_defaults()->take_last();
  addTexts(app, "INPUT", options.inputs)->expected(-1);
  app.add_option("-o,--output", options.output);
  app.add_option("--base", options.base);
  app.add_option("--files-from", options.listing);
  addTexts(app, "--include", options.include);
  addTexts(app, "--exclude", options.exclude);
  app.add_flag("--follow", options.followLinks);
  app.add_option("--to", options.settings.to);
  app.add_option("--deflection", options.settings.deflection);
  app.add_flag("--split", options.settings.split);
  app.add_flag("--parts", options.settings.parts);
  app.add_flag("--prepare", raw.prepare);  // what is done anyway, as earlier versions were told
  app.add_flag("--as-is", raw.asIs);
  app.add_flag("--resume", options.resume);
  app.add_flag("--prune", options.prune);
  app.add_flag("--dry-run", options.dryRun);
  app.add_option("--jobs", raw.jobs);
  app.add_option("--time-limit", raw.timeLimit);
  app.add_option("--memory-limit", raw.memoryLimit);
  app.add_option("--memory-free", raw.memoryFree);
  app.add_option("--transcript", options.transcriptOf);
  app.add_option("--export", options.exportPath);
  app.add_option("--sshlogin", options.sshlogin);
  app.add_flag("--transfer", options.transfer);
  app.add_option("--shard", raw.shard);
  app.add_flag("--merge", options.merge);
  app.add_flag("--check", options.checks);
  app.add_flag("--thumbnails", options.pictures);
  app.add_flag("--bar", options.bar);
  app.add_option("--program", options.settings.program);
  app.add_flag("--worker", options.worker);
  app.add_flag("--version", raw.version);
  app.add_flag("-h,--help", raw.help);
  for (CLI::Option* const option : app.get_options()) {
    option->transform(withoutGuard);
  }
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("plenvorith-batch: ") + error.what() + " (--help lists the options)\n";
  });
}

/// Gives 0, or another number where the library has printed what is wrong.
int parse(CLI::App& app, const std::vector<std::string>& arguments) {
  std::vector<const char*> pointers;
  pointers.reserve(arguments.size());
  for (const std::string& argument : arguments) {
    pointers.push_back(argument.c_str());
  }
  CLI11_PARSE(app, static_cast<int>(pointers.size()), pointers.data());
  return 0;
}

/// Converts one value, if it is given; adds a line to `problems` where it is not what `form` says.
template <typename Value, typename Convert>
void take(const char* option, const std::optional<std::string>& text, const char* form,
          Value& value, std::vector<std::string>& problems, Convert convert) {
  if (!text) {
    return;
  }
  if (const auto converted = convert(*text)) {
    value = *converted;
  } else {
    problems.push_back(std::string(option) + " is " + form + ", not " + *text);
  }
}

/// Whether the run has nothing to convert and only works on what earlier runs have noted.
bool worksOnTheStateOnly(const Options& options) {
  return !options.transcriptOf.empty() ||
         (!options.dryRun && (options.prune || options.merge || !options.exportPath.empty()));
}

/// What is wrong with the options for hosts and shards together.
void checkSharing(const Options& options, std::vector<std::string>& problems) {
  const bool hasInputs = !options.inputs.empty() || options.listing;
  if (options.transfer && options.sshlogin.empty()) {
    problems.emplace_back("--transfer needs --sshlogin");
  }
  if (options.merge && (hasInputs || options.shard || options.dryRun)) {
    problems.emplace_back("--merge converts nothing: no INPUT, --shard or --dry-run with it");
  }
  if (options.shard &&
      (options.prune || options.checks || options.pictures || !options.exportPath.empty())) {
    problems.emplace_back(
        "--prune, --export, --check and --thumbnails go with --merge, not --shard");
  }
}

/// What is wrong with the options, one line each.
std::vector<std::string> check(Options& options, const RawValues& raw) {
  std::vector<std::string> problems;
  const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  const ConversionSettings& settings = options.settings;
  if (options.inputs.empty() && !options.listing && !worksOnTheStateOnly(options)) {
    problems.emplace_back("no INPUT (--help explains)");
  }
  if (options.output.empty()) {
    problems.emplace_back("no output folder: -o DIR is missing");
  }
  // Who is used to the converter names a file, and would get a folder of that name.
  if (options.output.ends_with(".stl") || options.output.ends_with(".stp")) {
    problems.push_back("-o is a folder, not a file like " + options.output);
  }
  if (settings.to != "stl" && settings.to != "stp") {
    problems.push_back("--to is stl or stp, not " + settings.to);
  }
  if (!isDeflection(settings.deflection)) {
    problems.push_back("--deflection is a number above 0, not " + settings.deflection);
  }
  if (settings.parts && !(settings.split && settings.to == "stl" && settings.program.empty())) {
    problems.emplace_back("--parts goes with --split to stl, without --program");
  }
  const std::string& path = options.exportPath;
  if (!path.empty() && !path.ends_with(".csv") && !path.ends_with(".json")) {
    problems.push_back("--export is a file that ends in .csv or .json, not " + path);
  }
  if (raw.prepare && raw.asIs) {
    problems.emplace_back("--prepare and --as-is exclude each other");
  }
  options.settings.prepare = !raw.asIs;
  options.jobs = cores;
  options.jobsText = raw.jobs.value_or("");
  take("--jobs", raw.jobs, "a number above 0, as in 4, 50%, +1 or -1", options.jobs, problems,
       [cores](const std::string& text) { return jobsFrom(text, cores); });
  take("--time-limit", raw.timeLimit, "a number and s, m or h", options.settings.timeLimit,
       problems, durationFrom);
  take("--memory-limit", raw.memoryLimit, "a number of bytes and k, M or G",
       options.settings.memoryLimit, problems, bytesFrom);
  take("--memory-free", raw.memoryFree, "a number of bytes and k, M or G", options.memoryFree,
       problems, bytesFrom);
  take("--shard", raw.shard, "a number and how many there are, as in 2/8", options.shard, problems,
       shardFrom);
  checkSharing(options, problems);
  return problems;
}

}  // namespace

std::optional<int> jobsFrom(const std::string& text, int cores) {
  constexpr std::int64_t kMost = 4096;
  if (text.empty()) {
    return std::nullopt;
  }
  const bool isRelative = text.front() == '+' || text.front() == '-';
  const bool isShare = text.back() == '%';
  std::string_view digits = text;
  digits.remove_prefix(isRelative ? 1 : 0);
  digits.remove_suffix(isShare ? 1 : 0);
  const std::optional<std::int64_t> number = numberFrom(digits);
  if (!number || *number > kMost || (isRelative && isShare) || (*number == 0 && !isRelative)) {
    return std::nullopt;
  }
  std::int64_t jobs = *number;
  if (isShare) {
    jobs = cores * *number / 100;
  } else if (isRelative) {
    jobs = text.front() == '+' ? cores + *number : cores - *number;
  }
  return static_cast<int>(std::clamp(jobs, std::int64_t{1}, kMost));
}

std::optional<std::chrono::seconds> durationFrom(const std::string& text) {
  std::optional<std::int64_t> seconds;
  switch (text.empty() ? '\0' : text.back()) {
    case 'h':
      seconds = scaled(withoutLast(text), 3600);
      break;
    case 'm':
      seconds = scaled(withoutLast(text), 60);
      break;
    case 's':
      seconds = scaled(withoutLast(text), 1);
      break;
    default:
      seconds = scaled(text, 1);
  }
  constexpr std::int64_t kLongest = std::int64_t{100} * 366 * 24 * 3600;
  if (!seconds) {
    return std::nullopt;
  }
  return std::chrono::seconds(std::min(*seconds, kLongest));
}

std::optional<Shard> shardFrom(const std::string& text) {
  constexpr std::int64_t kMost = 100000;
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> number = numberFrom(std::string_view(text).substr(0, slash));
  const std::optional<std::int64_t> count = numberFrom(std::string_view(text).substr(slash + 1));
  if (!number || !count || *number < 1 || *number > *count || *count > kMost) {
    return std::nullopt;
  }
  return Shard{static_cast<int>(*number), static_cast<int>(*count)};
}

std::optional<std::int64_t> bytesFrom(const std::string& text) {
  constexpr std::string_view kUnits = "kKmMgGtT";
  const std::size_t unit = text.empty() ? std::string_view::npos : kUnits.find(text.back());
  if (unit == std::string_view::npos) {
    return scaled(text, 1);
  }
  return scaled(withoutLast(text), std::int64_t{1} << (10 * (unit / 2 + 1)));
}

bool isDeflection(const std::string& text) {
  double number = 0.0;
  // The first character tells, too: "inf" and "nan" are numbers to the function.
  const bool startsLikeNumber = !text.empty() && (isDigit(text.front()) || text.front() == '.');
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return startsLikeNumber && stop == end && error == std::errc() && number > 0.0 &&
         text.find_first_of("xX") == std::string::npos;
}

ParsedOptions parseOptions(int argc, char** argv) {
  constexpr int kWrongUse = 2;
  ParsedOptions parsed;
  RawValues raw;
  CLI::App app;
  addOptions(app, parsed.options, raw);
  if (parse(app, guarded(argc, argv)) != 0) {
    parsed.exitStatus = kWrongUse;
  } else if (raw.help) {
    std::cout << kHelp << std::endl;
    parsed.exitStatus = 0;
  } else if (raw.version) {
    std::cout << "plenvorith-batch " << versionText() << std::endl;
    parsed.exitStatus = 0;
  } else if (!parsed.options.worker) {
    const std::vector<std::string> problems = check(parsed.options, raw);
    for (const std::string& problem : problems) {
      std::cerr << "plenvorith-batch: " << problem << std::endl;
      parsed.exitStatus = kWrongUse;
    }
  }
  return parsed;
}

}  // namespace plenvorith
