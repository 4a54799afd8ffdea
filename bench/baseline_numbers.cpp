// The number floor: reads a file into memory and converts every number in it with std::from_chars,
// one pass, nothing else. What starts with a digit, or with a sign or point before one, is a
// number.
//
//   baseline_numbers INPUT

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "bench/stopwatch.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  const plenvorith::bench::Stopwatch stopwatch;
  std::ifstream file(argv[1], std::ios::binary | std::ios::ate);
  const std::streamsize size = file.tellg();
  file.seekg(0);
  const auto bytes = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size));
  file.read(bytes.get(), size);

  const char* p = bytes.get();
  const char* const end = p + size;
  double sum = 0;
  std::size_t count = 0;
  while (p != end) {
    const bool mayStart = (*p >= '0' && *p <= '9') || *p == '-' || *p == '.';
    double value = 0;
    if (!mayStart) {
      ++p;
      continue;
    }
    const auto [behind, error] = std::from_chars(p, end, value);
    if (behind == p) {
      ++p;
      continue;
    }
    sum += value;
    ++count;
    p = behind;
  }
  std::printf("numbers %zu sum %g\n", count, sum);
  stopwatch.report();
  return 0;
}
