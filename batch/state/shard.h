#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "batch/records/input_file.h"
#include "batch/records/settings.h"
#include "batch/state/names.h"

namespace plenvorith {

/// Where everything of a shard stands: transcripts and outputs with those of the other shards,
/// state and work in progress in a folder of its own.
Places placesOfShard(const Places& places, const Shard& shard);

/// The folder that holds those of the shards and what they have agreed on.
std::string shardsFolder(const Places& places);

/// The file of the division.
std::string divisionPath(const Places& places);

/// All files of a division, and how they are divided.
struct Division {
  int count = 0;         ///< of shards
  std::string settings;  ///< what the shards have in common
  std::vector<InputFile> files;
};

/// Proposes a division and gives the one that holds: that of the first process to propose one.
///
/// Two processes may propose at the same time, on different hosts and a network disk: no lock is
/// used, only a link that exactly one of them can make.
///
/// Takes   the path of the file of the division; its folder is made.
/// Errors  `problem` says what went wrong.
Division agreeOnDivision(const std::string& path, const Division& proposal, std::string& problem);

/// The division in a file; nothing if there is none.
std::optional<Division> readDivision(const std::string& path);

/// The number of the shard, from 1 on, that each of the files belongs to.
std::vector<std::size_t> shardsOf(const Division& division);

/// The files of one shard, in the order of the division.
std::vector<InputFile> filesOfShard(const Division& division, int number);

}  // namespace plenvorith
