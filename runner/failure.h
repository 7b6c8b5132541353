// What the person at the terminal is told when something can't be done, or not as expected.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace runner {

// One sentence, without a full stop or a line end; the program puts its name before it, ends with a
// non-zero exit and has written nothing.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line itself is wrong: exit status 2 instead of 1.
class UsageFailure : public Failure {
 public:
  using Failure::Failure;
};

// Takes a sentence like a Failure's about work that goes on although not all of it can be done as
// asked. It may throw Failure, where a person wants no such work. Empty: nobody is told.
using Warn = std::function<void(const std::string&)>;

// Prints a line on standard error.
void WarnOnStandardError(const std::string& message);

}  // namespace runner
