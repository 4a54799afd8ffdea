#include "batch/state/shard.h"

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "batch/state/division.h"
#include "batch/system/descriptor.h"
#include "batch/system/folder.h"

namespace plenvorith {
namespace {

constexpr std::string_view kTitle = "plenvorith-batch division 1\n";

/// The number at the front of a text, which has to be followed by `end`; both are cut off.
std::optional<std::int64_t> takeNumber(std::string_view& text, char end) {
  std::int64_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(stop - text.data());
  if (error != std::errc() || number < 0 || length == text.size() || *stop != end) {
    return std::nullopt;
  }
  text.remove_prefix(length + 1);
  return number;
}

/// What stands before the next NUL, which is cut off as well.
std::optional<std::string> takeText(std::string_view& text) {
  const std::size_t end = text.find('\0');
  if (end == std::string_view::npos) {
    return std::nullopt;
  }
  std::string taken(text.substr(0, end));
  text.remove_prefix(end + 1);
  return taken;
}

std::string textOf(const Division& division) {
  std::string text(kTitle);
  text += std::to_string(division.count) + '\n' + division.settings + '\0';
  for (const InputFile& file : division.files) {
    text += std::to_string(file.size) + ' ' + file.path + '\0';
  }
  return text;
}

/// Writes a file that is on the disk afterwards.
bool writeWhole(const std::string& path, const std::string& text) {
  constexpr mode_t kRights = 0666;
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kRights));
  return file.isOpen() && writeAll(file.get(), text) && fsync(file.get()) == 0;
}

}  // namespace

std::string shardsFolder(const Places& places) {
  return places.state + "/shards";
}

std::string divisionPath(const Places& places) {
  return shardsFolder(places) + "/division";
}

Places placesOfShard(const Places& places, const Shard& shard) {
  const std::string folder = shardsFolder(places) + '/' + std::to_string(shard.number) + "-of-" +
                             std::to_string(shard.count);
  Places own = places;
  own.run = folder + "/run";
  own.database = folder + "/state.db";
  own.lock = folder + "/lock";
  return own;
}

Division agreeOnDivision(const std::string& path, const Division& proposal, std::string& problem) {
  if (std::optional<Division> division = readDivision(path)) {
    return std::move(*division);
  }
  // A name that no other process has, on this host or another.
  std::string own = path + "-XXXXXX";
  if (!makeFolders(folderOf(path)) || !Descriptor(mkstemp(own.data())).isOpen() ||
      !writeWhole(own, textOf(proposal))) {
    problem = path + ": " + strerror(errno);
    return {};
  }
  const bool isFirst = link(own.c_str(), path.c_str()) == 0 || errno == EEXIST;
  const int error = errno;
  (void)unlink(own.c_str());
  std::optional<Division> division = readDivision(path);
  if (!isFirst || !division) {
    problem = path + ": " + (isFirst ? "cannot be read" : strerror(error));
    return {};
  }
  return std::move(*division);
}

std::optional<Division> readDivision(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::string_view rest = text;
  if (!rest.starts_with(kTitle)) {
    return std::nullopt;
  }
  rest.remove_prefix(kTitle.size());
  Division division;
  const std::optional<std::int64_t> count = takeNumber(rest, '\n');
  std::optional<std::string> settings = count ? takeText(rest) : std::nullopt;
  if (!settings) {
    return std::nullopt;
  }
  division.count = static_cast<int>(*count);
  division.settings = std::move(*settings);
  while (!rest.empty()) {
    const std::optional<std::int64_t> size = takeNumber(rest, ' ');
    std::optional<std::string> name = size ? takeText(rest) : std::nullopt;
    if (!name) {
      return std::nullopt;
    }
    division.files.push_back({std::move(*name), *size});
  }
  return division;
}

std::vector<std::size_t> shardsOf(const Division& division) {
  std::vector<std::uint64_t> sizes;
  for (const InputFile& file : division.files) {
    sizes.push_back(static_cast<std::uint64_t>(file.size));
  }
  std::vector<std::size_t> shards = divideEvenly(sizes, static_cast<std::size_t>(division.count));
  for (std::size_t& shard : shards) {
    ++shard;
  }
  return shards;
}

std::vector<InputFile> filesOfShard(const Division& division, int number) {
  const std::vector<std::size_t> shards = shardsOf(division);
  std::vector<InputFile> files;
  for (std::size_t i = 0; i < shards.size(); ++i) {
    if (shards[i] == static_cast<std::size_t>(number)) {
      files.push_back(division.files[i]);
    }
  }
  return files;
}

}  // namespace plenvorith
