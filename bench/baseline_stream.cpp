// The streaming loop: reads a file into memory and writes the triangles of its tessellation to a
// binary STL while it goes over the text, once. No table, no triangles in memory: what holding them
// costs is the difference to the program. It knows no more than generated files ask for:
// every face follows its points, names are empty, nothing is malformed. The triangles are the
// program's, in the order of the file.
//
//   baseline_stream INPUT OUTPUT

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "bench/stopwatch.h"

namespace {

using Point = std::array<double, 3>;

/// Goes over blanks, line ends and separators to the next number, unless `end` comes first.
bool findNumber(const char*& p, const char* end) {
  while (p != end && !((*p >= '0' && *p <= '9') || *p == '-' || *p == '.')) {
    ++p;
  }
  return p != end;
}

/// Reads the next three numbers, if there are any left before `end`.
template <typename Number>
bool nextTriple(const char*& p, const char* end, std::array<Number, 3>& triple) {
  for (Number& value : triple) {
    if (!findNumber(p, end)) {
      return false;
    }
    p = std::from_chars(p, end, value).ptr;
  }
  return true;
}

struct Record {
  std::array<float, 12> values;
};

/// Normal and corners as the program computes them.
Record recordOf(const Point& a, const Point& b, const Point& c) {
  Point n{};
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (i + 2) % 3;
    n[i] = (b[j] - a[j]) * (c[k] - a[k]) - (b[k] - a[k]) * (c[j] - a[j]);
  }
  const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
  Record record{};
  for (std::size_t i = 0; i < 3; ++i) {
    record.values[i] = static_cast<float>(length > 1e-12 ? n[i] / length : n[i]);
    record.values[3 + i] = static_cast<float>(a[i]);
    record.values[6 + i] = static_cast<float>(b[i]);
    record.values[9 + i] = static_cast<float>(c[i]);
  }
  return record;
}

/// An STL file that is written in blocks; its count is filled in at the end.
class Stl {
 public:
  explicit Stl(const char* path) : file_(path, std::ios::binary) {
    constexpr std::size_t kHeader = 84;
    block_.resize(kHeader);
    std::memcpy(block_.data(), "Plenvorith binary STL", 21);
  }

  void add(const Record& record) {
    constexpr std::size_t kRecord = 50;
    constexpr std::size_t kBlock = std::size_t{1} << 20;
    if (block_.size() + kRecord > kBlock) {
      flush();
    }
    const std::size_t place = block_.size();
    block_.resize(place + kRecord);
    std::memcpy(block_.data() + place, record.values.data(), sizeof record.values);
    ++count_;
  }

  bool close() {
    constexpr std::streamoff kCountAt = 80;
    flush();
    file_.seekp(kCountAt);
    file_.write(reinterpret_cast<const char*>(&count_), sizeof count_);
    return static_cast<bool>(file_.flush());
  }

  std::uint32_t count() const {
    return count_;
  }

 private:
  void flush() {
    file_.write(block_.data(), static_cast<std::streamsize>(block_.size()));
    block_.clear();
  }

  std::ofstream file_;
  std::vector<char> block_;
  std::uint32_t count_ = 0;
};

void convert(std::string_view file, Stl& stl) {
  constexpr std::string_view kPoints = "COORDINATES_LIST(";
  constexpr std::string_view kFace = "COMPLEX_TRIANGULATED_FACE(";
  std::vector<Point> points;
  std::size_t start = 0;
  for (std::size_t end = file.find(';'); end != std::string_view::npos;
       end = file.find(';', start)) {
    const std::string_view text = file.substr(start, end - start);
    start = end + 1;
    const std::string_view value = text.substr(text.find('=') + 1);
    const char* const last = value.data() + value.size();
    if (value.starts_with(kPoints)) {
      points.clear();
      // Behind the name and the number of points.
      const char* p = value.data() + value.find('(', kPoints.size());
      for (Point point{}; nextTriple(p, last, point);) {
        points.push_back(point);
      }
    } else if (value.starts_with(kFace)) {
      // Behind the normals and an empty list of indices.
      const char* p = value.data() + value.find("$,()");
      for (std::array<std::size_t, 3> t{}; nextTriple(p, last, t);) {
        stl.add(recordOf(points[t[0] - 1], points[t[1] - 1], points[t[2] - 1]));
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const plenvorith::bench::Stopwatch stopwatch;
  std::ifstream file(argv[1], std::ios::binary | std::ios::ate);
  const auto size = static_cast<std::size_t>(file.tellg());
  file.seekg(0);
  const auto bytes = std::make_unique_for_overwrite<char[]>(size);
  file.read(bytes.get(), static_cast<std::streamsize>(size));
  Stl stl(argv[2]);
  convert({bytes.get(), size}, stl);
  if (!stl.close()) {
    return 1;
  }
  std::printf("triangles %u\n", stl.count());
  stopwatch.report();
  return 0;
}
