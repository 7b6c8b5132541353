#include "tests/steps/instructions.h"

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace steps {
namespace {

// callgrind writes what it counted to PREFIX.1, PREFIX.2 and so on, one file for each dump.
// `--callgrind-out-file` says the prefix, and so does this variable.
const char* Prefix() { return std::getenv("CALLGRIND_OUT_FILE"); }

// The number behind "totals:" in a file that callgrind wrote.
int64_t TotalOf(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    constexpr std::string_view kTotals = "totals:";
    if (line.starts_with(kTotals)) return std::stoll(line.substr(kTotals.size()));
  }
  throw std::runtime_error("callgrind wrote no totals to " + path);
}

}  // namespace

bool CanCount() { return RUNNING_ON_VALGRIND != 0 && Prefix() != nullptr; }

int64_t CountInstructions(const std::function<void()>& function) {
  static int dumps = 0;
  CALLGRIND_ZERO_STATS;
  function();
  CALLGRIND_DUMP_STATS;
  const std::string path = Prefix() + ("." + std::to_string(++dumps));
  const int64_t total = TotalOf(path);
  std::filesystem::remove(path);
  return total;
}

}  // namespace steps
