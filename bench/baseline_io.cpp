// What reading and writing bytes costs, and nothing else.
//
//   baseline_io read INPUT                  reads a file in blocks of 1 MiB
//   baseline_io copy INPUT OUTPUT BYTES     reads a file like this, then writes BYTES bytes
//   baseline_io zeros OUTPUT BYTES          writes zeros in blocks of 1 MiB

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "bench/stopwatch.h"

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

std::size_t readAll(const char* path, std::vector<char>& block) {
  const int file = open(path, O_RDONLY);
  std::size_t total = 0;
  for (ssize_t n = 1; n > 0; total += static_cast<std::size_t>(std::max<ssize_t>(n, 0))) {
    n = read(file, block.data(), block.size());
  }
  close(file);
  return total;
}

void writeBytes(const char* path, const std::vector<char>& block, std::size_t bytes) {
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  while (bytes > 0) {
    const ssize_t n = write(file, block.data(), std::min(bytes, block.size()));
    if (n <= 0) {
      std::perror(path);
      std::exit(1);
    }
    bytes -= static_cast<std::size_t>(n);
  }
  close(file);
}

}  // namespace

int main(int argc, char** argv) {
  const plenvorith::bench::Stopwatch stopwatch;
  std::vector<char> block(kBlock);
  if (argc == 3 && std::strcmp(argv[1], "read") == 0) {
    std::printf("bytes %zu\n", readAll(argv[2], block));
  } else if (argc == 5 && std::strcmp(argv[1], "copy") == 0) {
    readAll(argv[2], block);
    writeBytes(argv[3], block, std::strtoull(argv[4], nullptr, 10));
  } else if (argc == 4 && std::strcmp(argv[1], "zeros") == 0) {
    writeBytes(argv[2], block, std::strtoull(argv[3], nullptr, 10));
  } else {
    return 2;
  }
  stopwatch.report();
  return 0;
}
