// Loading the plug-in for a stage.
#pragma once

#include <string>
#include <string_view>

#include "bench/stage.h"

namespace bench {

// The built plug-in as it is. With a name, "baseline", "avx2" or "avx512", the build for the tests,
// which can be told to use that instruction set; throws host::Error when this processor lacks it.
Starter MakeStarter(std::string_view instructionSet);

// The widest set that this processor has, by the same names.
std::string WidestInstructionSet();

}  // namespace bench
