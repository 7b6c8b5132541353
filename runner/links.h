// Where names lead.
#pragma once

#include <filesystem>
#include <optional>

namespace runner {

// The number of this process's descriptor that a name such as /dev/stdout or /dev/fd/3 stands for.
// Symbolic links are followed.
std::optional<int> DescriptorBehind(const std::filesystem::path& name);

// The name at the end of a chain of symbolic links; it need not exist. Empty: the chain has no end.
std::filesystem::path EndOfLinks(std::filesystem::path name);

}  // namespace runner
