// How far a batch has come, for a person who watches.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace runner {

// A bar on standard error where that is a terminal, and nothing anywhere else.
class Progress {
 public:
  explicit Progress(size_t total, bool isWanted = true);
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Redraws the bar, at most ten times a second but for the last.
  void Show(size_t done, size_t failed);
  // Takes the bar away, so that a line can be written in its place.
  void Clear();

 private:
  size_t total;
  bool terminal;
  bool drawn = false;
  std::chrono::steady_clock::time_point last;
};

// The bar's text for a terminal so many columns wide: "[####----] 5/10, 1 failed".
std::string ProgressBar(size_t done, size_t total, size_t failed, size_t columns);

}  // namespace runner
