#include "batch/worker/outputs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/system/descriptor.h"
#include "batch/system/folder.h"
#include "common/little_endian.h"

namespace plenvorith {
namespace {

constexpr std::int64_t kHeaderSize = 84;  // with the number of triangles
constexpr std::size_t kRecordSize = 50;

/// The names in a folder, numbers in them by their value: part 2 comes before part 10.
std::vector<std::string> namesByNumber(const std::string& folder) {
  std::vector<std::string> names = namesInFolder(folder);
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return strverscmp(a.c_str(), b.c_str()) < 0;
  });
  return names;
}

/// The least and the largest coordinate on each axis; the wrong way round while there are none.
struct Extent {
  std::array<float, 3> low;
  std::array<float, 3> high;
};

void includeCorners(const char* record, Extent& extent) {
  constexpr std::size_t kNumbers = 12;
  for (std::size_t i = 3; i < kNumbers; ++i) {  // the normal comes first
    const float number = getFloat(record + 4 * i);
    const std::size_t axis = i % 3;
    // False for what is no number.
    if (number < extent.low[axis]) {
      extent.low[axis] = number;
    }
    if (number > extent.high[axis]) {
      extent.high[axis] = number;
    }
  }
}

/// Reads the records of an STL file from the descriptor's place on; whether all are there.
bool readTriangles(int file, std::int64_t count, Extent& extent) {
  constexpr std::size_t kRecords = 4096;
  std::vector<char> block(kRecords * kRecordSize);
  std::size_t held = 0;
  while (count > 0) {
    const ssize_t got = read(file, block.data() + held, block.size() - held);
    if (got <= 0) {
      return false;
    }
    held += static_cast<std::size_t>(got);
    const std::size_t records = held / kRecordSize;
    for (std::size_t i = 0; i < records; ++i) {
      includeCorners(block.data() + i * kRecordSize, extent);
    }
    count -= static_cast<std::int64_t>(records);
    held -= records * kRecordSize;
    std::memmove(block.data(), block.data() + records * kRecordSize, held);
  }
  return true;
}

/// The number that the four bytes before the first triangle hold; -1 if they are not there.
std::int64_t triangleCount(int file) {
  std::array<char, kHeaderSize> header{};
  if (read(file, header.data(), header.size()) != kHeaderSize) {
    return -1;
  }
  return getUint32(header.data() + 80);
}

bool lookAtStl(int file, std::int64_t size, MadeFiles& made, Extent& extent) {
  const std::int64_t count = triangleCount(file);
  if (count < 0 || size != kHeaderSize + static_cast<std::int64_t>(kRecordSize) * count ||
      !readTriangles(file, count, extent)) {
    return false;
  }
  made.triangles += count;
  return true;
}

bool endsLikeStep(int file) {
  constexpr std::size_t kEnd = 256;
  return readEnds(file, kEnd).find("END-ISO-10303-21;") != std::string::npos;
}

std::optional<Bounds> boundsFrom(const Extent& extent) {
  Bounds bounds;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (!std::isfinite(extent.low[axis]) || !std::isfinite(extent.high[axis])) {
      return std::nullopt;
    }
    bounds.low[axis] = extent.low[axis];
    bounds.high[axis] = extent.high[axis];
  }
  return bounds;
}

}  // namespace

MadeFiles lookAtOutputs(const std::string& folder) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  Extent extent{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
  MadeFiles made;
  const std::string prefix = folder + '/';
  for (const std::string& name : namesByNumber(folder)) {
    const std::string path = prefix + name;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
      continue;
    }
    made.outputs.push_back({name, status.st_size});
    const bool isWhole =
        name.ends_with(".stl") ? lookAtStl(file.get(), status.st_size, made, extent)
        : name.ends_with(".stp") || name.ends_with(".step") ? endsLikeStep(file.get())
                                                            : true;
    if (!isWhole && made.incomplete.empty()) {
      made.incomplete = name;
    }
  }
  made.bounds = boundsFrom(extent);
  return made;
}

}  // namespace plenvorith
