// How long a call takes, in a way that other processes don't matter much.
#pragma once

#include <ctime>
#include <limits>

namespace timing {

// Seconds that this thread has been running.
inline double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The shortest of `attempts` runs, in seconds.
template <class Function>
double Shortest(const Function& function, int attempts = 5) {
  double shortest = std::numeric_limits<double>::infinity();
  for (int i = 0; i < attempts; ++i) {
    const double begin = ThreadSeconds();
    function();
    const double seconds = ThreadSeconds() - begin;
    if (seconds < shortest) shortest = seconds;
  }
  return shortest;
}

}  // namespace timing
