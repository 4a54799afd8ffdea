#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/settings.h"

namespace plenvorith {

/// What the command line asks for.
struct Options {
  ConversionSettings settings;
  std::vector<std::string> inputs;     ///< files and folders
  std::optional<std::string> listing;  ///< file that lists more of them; "-" is standard input
  std::string output;                  ///< the output folder, DIR
  std::string base;                    ///< where the names of the outputs begin; empty: find out
  std::vector<std::string> include;  ///< globs, one of which a file has to match, if there are any
  std::vector<std::string> exclude;  ///< globs of files and folders to leave out
  bool followLinks = false;          ///< look into folders that are links
  bool resume = false;               ///< leave out what is converted
  bool prune = false;                ///< remove outputs whose inputs have vanished
  bool dryRun = false;               ///< tell what would be done
  bool bar = false;                  ///< show the progress line, terminal or not
  int jobs = 1;                      ///< files at once on this machine
  std::int64_t memoryFree = std::int64_t{1} << 30;  ///< bytes; below, no further file is begun
  std::string transcriptOf;  ///< input whose transcript is to be printed, and nothing else done
  std::string exportPath;    ///< .csv or .json file to write; may be empty
  std::string jobsText;      ///< the same, as given, for other hosts; empty: one for each core
  std::string sshlogin;      ///< hosts to convert on, as GNU parallel takes them; empty: only here
  bool transfer = false;     ///< send inputs to the hosts and bring outputs back
  std::optional<Shard> shard;  ///< the part to convert, if not all
  bool merge = false;          ///< make one state of those of the shards; converts nothing
  bool checks = false;         ///< have plenvorith-check look at every mesh
  bool pictures = false;       ///< have f3d draw every mesh
  bool worker = false;         ///< take jobs on standard input instead, for a driver
};

struct ParsedOptions {
  Options options;
  std::optional<int> exitStatus;  ///< set if the program is to end with it at once
};

/// Reads the command line and checks all that can be checked without looking at any file.
///
/// Prints  help or version on standard output where they are asked for; what is wrong on standard
///         error.
ParsedOptions parseOptions(int argc, char** argv);

/// The number of jobs that a text asks for on a machine with this many cores: "4", "150%", "+1" and
/// "-1" (one more or fewer than cores); at least 1. Nothing for other texts.
std::optional<int> jobsFrom(const std::string& text, int cores);

/// The seconds of "90", "90s", "5m" or "2h". Nothing for other texts.
std::optional<std::chrono::seconds> durationFrom(const std::string& text);

/// The shard of "2/8". Nothing for other texts.
std::optional<Shard> shardFrom(const std::string& text);

/// The bytes of "1000", "64k", "512M" or "2G" (powers of 1024). Nothing for other texts.
std::optional<std::int64_t> bytesFrom(const std::string& text);

/// Whether a text is a decimal number above 0.
bool isDeflection(const std::string& text);

}  // namespace plenvorith
