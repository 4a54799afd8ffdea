#include "batch/duplicates.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <span>
#include <system_error>
#include <unordered_map>
#include <utility>

#include <poll.h>

#include "batch/inputs/input_identity.h"
#include "batch/system/folder.h"
#include "batch/system/host_name.h"

namespace plenvorith {
namespace {

/// Copies the outputs of the original to a folder; gives their names there, or nothing if that cannot
/// be done.
std::optional<std::vector<OutputRecord>> copyOutputs(const RunContext& context,
                                                     const FileRecord& original,
                                                     const std::string& folder,
                                                     const std::string& stem) {
  std::vector<OutputRecord> copies;
  for (const OutputRecord& output : original.outputs) {
    if (!output.path.starts_with(original.name)) {
      return std::nullopt;
    }
    const std::string name = stem + output.path.substr(original.name.size());
    const std::string copy = (folder + '/').append(name);
    std::error_code error;
    std::filesystem::copy_file(context.places.output + '/' + output.path, copy, error);
    if (error ||
        std::filesystem::file_size(copy, error) != static_cast<std::uintmax_t>(output.size)) {
      return std::nullopt;
    }
    copies.push_back({name, output.size});
  }
  return copies;
}

/// What a conversion of a file would give, made from that of its original; nothing if they differ, or
/// if there is no such conversion.
std::optional<Finished> finishedAs(StateHandle& state, const RunContext& context,
                                   const Duplicate& duplicate, const std::string& folder) {
  const std::string& path = duplicate.file.path;
  int error = 0;
  JobResult result;
  result.started = nanosecondsNow();
  const std::optional<InputIdentity> before = identityOf(path, error);
  const std::optional<FileRecord> original = findFile(state, duplicate.original);
  if (!before || !original || original->run != context.run ||
      original->status != FileStatus::Converted || original->hash.empty()) {
    return std::nullopt;
  }
  const std::string hash = contentHash(path);
  const std::optional<InputIdentity> after = identityOf(path, error);
  if (hash != original->hash || !after || !isSame(*before, *after) ||
      !makeFolders(folder + "/out")) {
    return std::nullopt;
  }
  const std::string stem = "copy";
  std::optional<std::vector<OutputRecord>> copies =
      copyOutputs(context, *original, folder + "/out", stem);
  if (!copies) {
    return std::nullopt;
  }
  std::ofstream(folder + "/transcript")
      << "The same bytes as " << original->path << ", whose conversion said:\n"
      << findTranscript(state, original->path).value_or("");
  static_cast<Outcome&>(result) = *original;
  result.isConverted = true;
  result.mtime = before->mtime;
  result.changed = before->changed;
  result.inode = before->inode;
  result.seconds = result.cpuSeconds = 0.0;
  result.peakMemory = 0;
  result.host = hostName();
  result.outputs = std::move(*copies);
  return Finished{path,
                  folder + "/out",
                  folder + "/transcript",
                  stem + '.' + context.extension,
                  std::move(result),
                  original->path};
}

bool isReadable(int descriptor) {
  pollfd event = {descriptor, POLLIN, 0};
  return poll(&event, 1, 0) > 0;
}

}  // namespace

std::vector<Duplicate> takeDuplicates(std::vector<InputFile>& files) {
  std::map<std::int64_t, std::size_t> sizes;
  for (const InputFile& file : files) {
    ++sizes[file.size];
  }
  // Half of a hash finds them; whether they are the same is told by the whole one before they are copied.
  std::unordered_map<std::uint64_t, std::size_t> originals;  // places in what stays of the list
  std::vector<Duplicate> duplicates;
  std::size_t stay = 0;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const std::string hash =
        files[i].size > 0 && sizes[files[i].size] > 1 ? contentHash(files[i].path) : "";
    if (std::uint64_t half = 0; hash.size() >= sizeof half) {
      std::memcpy(&half, hash.data(), sizeof half);
      const std::size_t original = originals.try_emplace(half, stay).first->second;
      if (original != stay && files[original].size == files[i].size) {
        duplicates.push_back({std::move(files[i]), files[original].path});
        continue;
      }
    }
    if (stay != i) {
      files[stay] = std::move(files[i]);
    }
    ++stay;
  }
  files.resize(stay);
  return duplicates;
}

std::vector<InputFile> settleDuplicates(StateHandle& state, const RunContext& context,
                                        const std::vector<Duplicate>& duplicates, int signals,
                                        Summary& summary) {
  constexpr std::size_t kAtOnce = 256;
  const std::string folder = context.places.run + "/copies";
  std::vector<InputFile> rest;
  for (std::size_t next = 0; next < duplicates.size() && !isReadable(signals); next += kAtOnce) {
    std::vector<Finished> finished;
    const std::size_t count = std::min(kAtOnce, duplicates.size() - next);
    for (const Duplicate& duplicate : std::span(duplicates).subspan(next, count)) {
      const std::string own = folder + '/' + std::to_string(finished.size());
      std::optional<Finished> one = finishedAs(state, context, duplicate, own);
      if (one) {
        finished.push_back(std::move(*one));
      } else {
        removeTree(own);
        rest.push_back(duplicate.file);
      }
    }
    const std::vector<Settled> settled = settle(state, context, finished);
    for (const Settled& one : settled) {
      addToSummary(summary, one);
      ++summary.duplicates;
    }
    if (settled.empty()) {  // the state takes nothing now
      for (const Finished& one : finished) {
        rest.push_back({one.input, one.result.size});
      }
    }
    removeTree(folder);
  }
  return rest;
}

}  // namespace plenvorith
