// What the program does, a function for each of its commands.
#pragma once

#include <cstdio>

#include "runner/options.h"

namespace runner {

// Each gives the exit status and throws Failure.
int RunList(const Options& options);
int RunRun(const Options& options);
int RunBatch(const Options& options);

// The whole program: 0 done, 1 something couldn't be done, 2 the command line is wrong. With
// --exit-status 0 and 1 are true and false, and all mistakes 2. Messages go to standard error, a
// line each.
int Main(int count, const char* const* words);

// Writes a line and the rest of what is buffered to standard output. Throws Failure where that
// can't be written.
void Print(const std::string& text);

}  // namespace runner
