// Calls of functions whose signature is known only at run time.
#pragma once

#include <span>

#include "host/call.h"

namespace runner {

// host::Invoker by libffi. `result` gets the value in its own width, in its first bytes.
void InvokeByFfi(void* function, host::native::Word result,
                 std::span<const host::native::Word> words, void** arguments, void* resultStorage);

}  // namespace runner
