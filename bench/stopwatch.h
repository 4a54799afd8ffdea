#pragma once

#include <chrono>
#include <cstdio>

#include <sys/resource.h>

namespace plenvorith::bench {

/// Seconds of the process and of the clock on the wall.
struct Times {
  double user = 0;    // in the program itself
  double system = 0;  // in the operating system for it
  double wall = 0;
};

inline Times timesNow() {
  rusage usage{};
  (void)getrusage(RUSAGE_SELF, &usage);  // cannot fail with these arguments
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now().time_since_epoch();
  return {seconds(usage.ru_utime), seconds(usage.ru_stime), wall.count()};
}

/// Measures from its construction on.
class Stopwatch {
 public:
  Times elapsed() const {
    const Times now = timesNow();
    return {now.user - start_.user, now.system - start_.system, now.wall - start_.wall};
  }

  /// Prints the line that bench/run reads.
  void report() const {
    const Times times = elapsed();
    std::printf("seconds user %.6f system %.6f wall %.6f\n", times.user, times.system, times.wall);
  }

 private:
  Times start_ = timesNow();
};

}  // namespace plenvorith::bench
