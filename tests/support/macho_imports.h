// What a Mac offers to a bundle, served by the test process and the embedded host.
#pragma once

#include <string_view>

#include "plugin/binding/records.h"
#include "tests/support/memory_calls.h"

namespace support {

// The address of `symbol` of the library installed at `library`; null when there is no such symbol
// in that very library. The C functions are the process's own; those of the frameworks are what
// `resolver` finds under their names, given C strings where the bundle gives constant CFStrings.
// What it doesn't find is a function that fails: a bundle whose imports are missing wouldn't be
// loaded.
void* MacImport(REALresolver resolver, std::string_view library, std::string_view symbol);

// The calls of the malloc and calloc that bundles are given.
MemoryCalls& MemoryCallsOfBundles();

}  // namespace support
