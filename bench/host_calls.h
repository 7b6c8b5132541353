// A call's host calls without its pixel work.
#pragma once

#include <functional>

#include "bench/case.h"

namespace bench {

// Notes which functions of the host `work.call` uses and makes the same calls, in the same order,
// on the same pictures. Empty where one of them can't be repeated by itself. The stage gives fresh
// outputs while it is timed.
std::function<void()> RepeatHostCalls(Stage& stage, const Work& work);

}  // namespace bench
