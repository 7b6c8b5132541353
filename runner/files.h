// Files read whole, with a sentence for each thing that can be wrong with them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace runner {

// Throws Failure for a file that is missing, isn't a regular file or can't be read.
void RequireRegularFile(const std::filesystem::path& path);

// The bytes of a regular file. Throws Failure, also for one larger than what a string or block of
// the host can hold.
constexpr size_t kLargestFile = 0x7FFFFFFF;
std::string ReadWholeFile(const std::filesystem::path& path);

// Its first bytes, fewer where it is shorter.
std::string ReadBeginning(const std::filesystem::path& path, size_t count);

}  // namespace runner
