// The one exception type of the embedded host's own interface.
#pragma once

#include <stdexcept>

namespace host {

// Thrown by the embedding interface when it is misused or can't do what it was asked: a second host
// while one lives, a plug-in that can't be loaded, an unknown method, arguments that don't fit. The
// text is one sentence for a person. The functions that the plug-in calls never throw.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace host
