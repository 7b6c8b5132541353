#include "runner/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace runner {
namespace {

size_t TerminalColumns() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

}  // namespace

std::string ProgressBar(size_t done, size_t total, size_t failed, size_t columns) {
  std::string count = std::to_string(done) + "/" + std::to_string(total);
  if (failed > 0) count.append(", ").append(std::to_string(failed)).append(" failed");
  // The last column stays free, where some terminals would begin a new line.
  constexpr size_t kWidest = 50, kNarrowest = 5;
  const size_t room = columns > count.size() + 4 ? columns - count.size() - 4 : 0;
  if (room < kNarrowest) return count;
  const size_t width = std::min(room, kWidest);
  const size_t filled = total == 0 ? width : width * std::min(done, total) / total;
  std::string bar = "[";
  bar.append(filled, '#').append(width - filled, '-').append("] ");
  return bar + count;
}

Progress::Progress(size_t count, bool isWanted)
    : total(count), terminal(isWanted && ::isatty(STDERR_FILENO) == 1) {}

void Progress::Show(size_t done, size_t failed) {
  if (!terminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (drawn && done < total && now - last < std::chrono::milliseconds(100)) return;
  std::cerr << "\r\033[K" + ProgressBar(done, total, failed, TerminalColumns());
  drawn = true;
  last = now;
}

void Progress::Clear() {
  if (drawn) std::cerr << "\r\033[K";
  drawn = false;
}

}  // namespace runner
