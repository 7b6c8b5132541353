// The library that opens and saves picture files, started as files of unknown origin want it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace runner {

// Starts libvips, once in a process, with the loaders of our formats alone. Throws Failure.
void StartVips();

// To be called before anything is encoded, and before a WebP file is decoded: libvips does both in
// threads of its own, and a process that is forked later would wait for them for ever. Throws
// Failure in such a process.
void RequireThreads();

// What went wrong in this thread's latest call, as one sentence without the names of functions.
std::string VipsProblem(std::string_view problem);

}  // namespace runner
