// What the person at the terminal is told when something can't be done.
#pragma once

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

}  // namespace runner
