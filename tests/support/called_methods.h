// Which of the plug-in's methods the tests of this run called.
#pragma once

#include "host/registry.h"

namespace support {

void NoteCall(const host::Callable& method);
void NoteAssignment(const host::Callable& pair);

// Lets the run fail at its end, naming them, if there are methods that the plug-in under test
// registers and no test called, or pairs that none assigned to.
void RequireEveryMethod();

}  // namespace support
