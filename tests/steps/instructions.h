// How many instructions a call takes. The count is the same on a busy machine and on an idle one.
#pragma once

#include <cstdint>
#include <functional>

namespace steps {

// Whether this program runs under valgrind's callgrind, which counts.
bool CanCount();

// The instructions that a call of `function` takes, those of the C library included.
int64_t CountInstructions(const std::function<void()>& function);

}  // namespace steps
