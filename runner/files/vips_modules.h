// The parts of libvips that are files of their own, loaded when a picture needs them.
#pragma once

#include <string>

#include "runner/files/image_format.h"

namespace runner {

// While this lives, libvips starts without them: all together take as long to load as a small
// picture takes from its file to its result. For the one thread that starts the library.
class WithoutVipsModules {
 public:
  WithoutVipsModules();
  ~WithoutVipsModules();
  WithoutVipsModules(const WithoutVipsModules&) = delete;
  WithoutVipsModules& operator=(const WithoutVipsModules&) = delete;

 private:
  std::string before;
  bool wasSet;
};

// Loads the part that opens and saves files of a format, once in a process. Does nothing where
// there is none; the library says then that it doesn't know the format.
void LoadModuleOf(const ImageFormat& format);

}  // namespace runner
