#include "runner/commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <string_view>

#include "runner/failure.h"
#include "runner/output_file.h"

namespace runner {
namespace {

// Whatever a library says becomes one line, written at once: other processes write lines, too.
void Complain(std::string message) {
  while (!message.empty() && message.back() == '\n') message.pop_back();
  for (char& c : message)
    if (c == '\n' || c == '\r') c = ' ';
  std::cerr << "picturehost: " + message + "\n";
}

int RunCommand(const Options& options) {
  switch (options.command) {
    case Command::kList:
      return RunList(options);
    case Command::kRun:
      return RunRun(options);
    case Command::kBatch:
      return RunBatch(options);
  }
  return 2;
}

}  // namespace

void Print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw Failure(std::string("can't write to standard output: ") + std::strerror(errno));
}

void WarnOnStandardError(const std::string& message) { Complain("warning: " + message); }

int Main(int count, const char* const* words) {
  OutputFile::CleanUpOnSignals();
  std::optional<Options> options;
  try {
    options = ParseOptions(count, words);
    return options ? RunCommand(*options) : 0;
  } catch (const UsageFailure& failure) {
    Complain(failure.what());
    return 2;
  } catch (const std::bad_alloc&) {
    Complain("there isn't enough memory");
  } catch (const std::exception& failure) {
    Complain(failure.what());
  }
  return options && options->exitStatus ? 2 : 1;
}

}  // namespace runner
