// Files read whole, with a sentence for each thing that can be wrong with them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace runner {

// Throws Failure for a file that is missing, isn't a regular file or can't be read.
void RequireRegularFile(const std::filesystem::path& path);

// The bytes of a regular file. Throws Failure, also for one larger than what a string or block of
// the host can hold.
constexpr size_t kLargestFile = 0x7FFFFFFF;
std::string ReadWholeFile(const std::filesystem::path& path);

// Some of them, fewer where it is shorter.
std::string ReadPart(const std::filesystem::path& path, uint64_t start, size_t count);

// All bytes of standard input. Throws Failure, also for more than that.
std::string ReadStandardInput();

}  // namespace runner
