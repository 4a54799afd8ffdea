#include "tests/reference/reference_stl_writer.h"

#include <bit>
#include <cstdint>

namespace plenvorith::test {
namespace {

void append(std::string& bytes, std::uint32_t number) {
  for (int i = 0; i < 4; ++i) {
    bytes.push_back(static_cast<char>(number % 256));
    number /= 256;
  }
}

void append(std::string& bytes, const Point3& point) {
  for (const double coordinate : {point.x, point.y, point.z}) {
    append(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(coordinate)));
  }
}

}  // namespace

std::string referenceBinaryStl(const std::vector<Triangle>& triangles) {
  std::string bytes = "Plenvorith binary STL";
  bytes.append(80 - bytes.size(), '\0');
  append(bytes, static_cast<std::uint32_t>(triangles.size()));
  for (const Triangle& triangle : triangles) {
    append(bytes, triangle.normal);
    append(bytes, triangle.v1);
    append(bytes, triangle.v2);
    append(bytes, triangle.v3);
    bytes.append(2, '\0');
  }
  return bytes;
}

}  // namespace plenvorith::test
