#pragma once

#include <chrono>
#include <cstdio>

namespace plenvorith::bench {

/// Measures from its construction on; `report` prints the line that bench/run reads.
class Stopwatch {
 public:
  void report() const {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    std::printf("seconds %.6f\n", elapsed.count());
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace plenvorith::bench
