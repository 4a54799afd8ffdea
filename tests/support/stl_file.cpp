#include "tests/support/stl_file.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace plenvorith::test {
namespace {

// 80 bytes of header, 4 of count, and for each triangle a record and 2 bytes of zeros.
constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kStart = kHeaderSize + 4;
constexpr std::size_t kStride = sizeof(StlRecord) + 2;

}  // namespace

std::string stlFile(const std::vector<StlRecord>& records) {
  std::string file = "Plenvorith binary STL";
  file.resize(kHeaderSize, '\0');
  const auto count = static_cast<std::uint32_t>(records.size());
  file.append(reinterpret_cast<const char*>(&count), sizeof count);
  for (const StlRecord& record : records) {
    file.append(reinterpret_cast<const char*>(record.data()), sizeof record);
    file.append(2, '\0');
  }
  return file;
}

std::vector<StlRecord> recordsOf(const std::string& file) {
  std::uint32_t count = 0;
  if (file.size() >= kStart) {
    std::memcpy(&count, file.data() + kHeaderSize, sizeof count);
  }
  if (file.size() != kStart + kStride * count) {
    throw std::runtime_error("an STL file of " + std::to_string(file.size()) + " bytes for " +
                             std::to_string(count) + " triangles");
  }
  std::vector<StlRecord> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(records[i].data(), file.data() + kStart + kStride * i, sizeof(StlRecord));
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
