#include "check/stl_reader.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "check/counted.h"
#include "common/block_reader.h"
#include "common/little_endian.h"

namespace plenvorith {
namespace {

constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kStart = kHeaderSize + 4;
constexpr std::size_t kRecordSize = 50;
constexpr std::size_t kBlockTriangles = 4096;

StlTriangle triangleAt(const char* record) {
  StlTriangle triangle;
  for (std::size_t i = 0; i < triangle.size(); ++i) {
    triangle[i] = getFloat(record + sizeof(float) * i);
  }
  return triangle;
}

/// Why a file of this size and start is no binary STL file; empty if it is one. A header may begin
/// with the word of the text format, so that the size is what decides.
std::string problemOf(std::string_view start, std::uint64_t size) {
  if (start.size() >= kStart &&
      size == kStart + kRecordSize * std::uint64_t{getUint32(start.data() + kHeaderSize)}) {
    return {};
  }
  if (start.starts_with("solid")) {
    return "is STL in text form, or damaged: only binary STL is read";
  }
  if (start.size() < kStart) {
    return "ends after " + counted(start.size(), "byte") + ", inside the " +
           std::to_string(kStart) + " in front of the first triangle";
  }
  const std::uint64_t count = getUint32(start.data() + kHeaderSize);
  const std::uint64_t whole = (size - kStart) / kRecordSize;
  if (whole < count) {
    return "ends after " + std::to_string(whole) + " of the " + counted(count, "triangle") +
           " that it says it has (byte " + std::to_string(size) + ")";
  }
  return "has " + counted(size - kStart - kRecordSize * count, "byte") + " behind the " +
         counted(count, "triangle") + " that it says it has";
}

/// Which vertex of the triangle, from 1 on, is no place; 0 if all are.
std::size_t vertexWithoutPlace(const StlTriangle& triangle) {
  for (std::size_t i = 3; i < triangle.size(); ++i) {
    if (!std::isfinite(triangle[i])) {
      return i / 3;
    }
  }
  return 0;
}

/// Reads what comes next, up to the size of `bytes`.
std::size_t readFully(BlockReader& file, std::span<char> bytes) {
  std::size_t size = 0;
  while (size < bytes.size()) {
    const std::size_t read = file.readInto(bytes.subspan(size));
    if (read == 0) {
      break;
    }
    size += read;
  }
  return size;
}

/// Reads the records of `count` triangles and hands them on.
std::string readTriangles(BlockReader& file, std::uint64_t count, const StlVisitor& visit) {
  std::vector<char> bytes(kBlockTriangles * kRecordSize);
  std::vector<StlTriangle> triangles;
  triangles.reserve(kBlockTriangles);
  for (std::uint64_t first = 0; first < count; first += triangles.size()) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(kBlockTriangles, count - first));
    if (readFully(file, std::span(bytes).first(wanted * kRecordSize)) != wanted * kRecordSize) {
      return "cannot be read to its end";
    }
    triangles.clear();
    for (std::size_t i = 0; i < wanted; ++i) {
      triangles.push_back(triangleAt(bytes.data() + i * kRecordSize));
      if (const std::size_t vertex = vertexWithoutPlace(triangles.back()); vertex != 0) {
        return "has no finite number in vertex " + std::to_string(vertex) + " of triangle " +
               std::to_string(first + i + 1) + " (byte " +
               std::to_string(kStart + kRecordSize * (first + i) + 12 * vertex) + ")";
      }
    }
    if (!visit(count, first, triangles)) {
      break;
    }
  }
  return {};
}

}  // namespace

std::string readBinaryStl(const std::string& path, const StlVisitor& visit) {
  BlockReader file(path);
  if (!file.isOpen()) {
    return "cannot be opened";
  }
  std::array<char, kStart> bytes;
  const std::string_view start(bytes.data(), readFully(file, bytes));
  if (file.hasFailed()) {
    return "cannot be read";
  }
  const std::uint64_t size = file.sizeHint();
  if (size < start.size()) {
    return "is no regular file";
  }
  std::string problem = problemOf(start, size);
  if (!problem.empty()) {
    return problem;
  }
  return readTriangles(file, getUint32(bytes.data() + kHeaderSize), visit);
}

}  // namespace plenvorith
