#include "tests/support/stl_file.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace plenvorith::test {
namespace {

// 80 bytes of header, 4 of count, and for each triangle a record and 2 bytes of zeros.
constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kStart = kHeaderSize + 4;
constexpr std::size_t kStride = sizeof(StlRecord) + 2;

/// The number in four bytes, the least first.
std::uint32_t numberAt(const std::string& file, std::size_t place) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;) {
    number = number << 8 | static_cast<unsigned char>(file[place + i]);
  }
  return number;
}

}  // namespace

std::string stlFile(const std::vector<StlRecord>& records) {
  std::string file = "Plenvorith binary STL";
  file.resize(kHeaderSize, '\0');
  const auto append = [&file](std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
      file.push_back(static_cast<char>(number >> shift & 0xFFU));
    }
  };
  append(static_cast<std::uint32_t>(records.size()));
  for (const StlRecord& record : records) {
    for (const float number : record) {
      append(std::bit_cast<std::uint32_t>(number));
    }
    file.append(2, '\0');
  }
  return file;
}

std::vector<StlRecord> recordsOf(const std::string& file) {
  std::uint32_t count = 0;
  if (file.size() >= kStart) {
    count = numberAt(file, kHeaderSize);
  }
  if (file.size() != kStart + kStride * count) {
    throw std::runtime_error("an STL file of " + std::to_string(file.size()) + " bytes for " +
                             std::to_string(count) + " triangles");
  }
  std::vector<StlRecord> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < records[i].size(); ++k) {
      records[i][k] = std::bit_cast<float>(numberAt(file, kStart + kStride * i + 4 * k));
    }
  }
  return records;
}

double volumeOf(const std::vector<StlRecord>& records) {
  double sixfold = 0;
  for (const StlRecord& r : records) {
    const std::array<double, 9> v = {r[3], r[4], r[5], r[6], r[7], r[8], r[9], r[10], r[11]};
    sixfold += v[0] * (v[4] * v[8] - v[5] * v[7]) + v[1] * (v[5] * v[6] - v[3] * v[8]) +
               v[2] * (v[3] * v[7] - v[4] * v[6]);
  }
  return sixfold / 6;
}

}  // namespace plenvorith::test
