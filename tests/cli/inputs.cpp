#include "tests/cli/inputs.h"

#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace plenvorith::test {

const std::vector<StlRecord> kUniqueTriangles = {
    {0, 0, 1, 0, 0, 50, 1, 0, 50, 1, 1, 50},
    {0, 0, 1, 0, 0, 50, 1, 1, 50, 0, 1, 50},
};

std::string dataFile(std::string_view name) {
  std::string content = readFile(std::filesystem::path(PLENVORITH_TEST_DATA) / name);
  EXPECT_FALSE(content.empty()) << name;
  return content;
}

std::string stepFile(std::string_view entities) {
  return "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n" + std::string(entities) +
         "ENDSEC;\nEND-ISO-10303-21;\n";
}

std::string appendEntities(const std::string& file, std::string_view entities) {
  std::string longer = file;
  return longer.insert(longer.rfind("ENDSEC;"), entities);
}

std::string box() {
  return dataFile("box.step");
}

std::string stlFile(const std::vector<StlRecord>& records) {
  std::string file = "Plenvorith binary STL" + std::string(59, '\0');
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
  if (file.size() >= 84) {
    std::memcpy(&count, file.data() + 80, sizeof count);
  }
  EXPECT_EQ(file.size(), 84 + std::size_t{50} * count);
  if (file.size() != 84 + std::size_t{50} * count) {
    return {};
  }
  std::vector<StlRecord> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(records[i].data(), file.data() + 84 + 50 * i, sizeof(StlRecord));
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
