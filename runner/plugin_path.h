// Where the plug-in is.
#pragma once

#include <filesystem>

namespace runner {

// Picture.so beside the running program, or else where it is installed with the program. Throws
// Failure when it is in neither place.
std::filesystem::path FindPlugin();

}  // namespace runner
