// The command line's options for files, as the module takes them.
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "runner/host_setup.h"

namespace pyhost {

// What went on all the same, to be told once the host is free: a warning may run any code of
// Python's.
using Warnings = std::vector<std::string>;

// How files are opened and saved as `words` say, like {"--page=2", "--strict"}. What they don't say
// is as the command line has it; pictures are laid out as the module's are.
struct FileSetup {
  // Throws runner::UsageFailure for what the command line would refuse.
  explicit FileSetup(const std::vector<std::string>& words);
  FileSetup(const FileSetup&) = delete;
  FileSetup& operator=(const FileSetup&) = delete;

  // Null: that of the name.
  const runner::ImageFormat* Format() const;

  runner::Options options;
  runner::ImageOptions images;
  runner::SaveOptions save;
  Warnings warnings;  // gets what is said through both
};

// Makes warnings of Python's of them, which tell of the line two calls above (see _files.py).
// Throws what such a warning became where it was turned into an error. Needs the interpreter lock,
// and the host's must not be held.
void Issue(const Warnings& warnings);

// A message with the options under the names that arguments have: "keep_alpha", not "--keep-alpha".
std::string WithNamesOfArguments(std::string message);

// Does something and gives what it gives. Failures are those of runner, with such messages.
template <class Do>
auto WithArguments(Do work) {
  try {
    return work();
  } catch (const runner::UsageFailure& failure) {
    throw runner::UsageFailure(WithNamesOfArguments(failure.what()));
  } catch (const runner::Failure& failure) {
    throw runner::Failure(WithNamesOfArguments(failure.what()));
  }
}

}  // namespace pyhost
