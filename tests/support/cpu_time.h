// What work costs, whatever else the machine is doing meanwhile.
#pragma once

#include <algorithm>
#include <ctime>
#include <limits>

namespace marbelot {

// The least that one of `runs` runs took of the processor, in seconds.
template <typename Work>
double cpuSeconds(int runs, Work work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  double least = std::numeric_limits<double>::max();
  for (int run = 0; run < runs; ++run) {
    const double start = now();
    work();
    least = std::min(least, now() - start);
  }
  return least;
}

}  // namespace marbelot
