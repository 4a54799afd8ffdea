#include "tests/reference/reference_stl_writer.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace plenvorith::test {
namespace {

static_assert(std::endian::native == std::endian::little);

template <typename Value>
void append(std::string& bytes, Value value) {
  char raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);
  bytes.append(raw, sizeof value);
}

void append(std::string& bytes, const Point3& point) {
  append(bytes, static_cast<float>(point.x));
  append(bytes, static_cast<float>(point.y));
  append(bytes, static_cast<float>(point.z));
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
    append(bytes, std::uint16_t{0});
  }
  return bytes;
}

}  // namespace plenvorith::test
