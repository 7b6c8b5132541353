// A host as the options describe it, with the plug-in loaded.
#pragma once

#include <memory>

#include "host/host.h"
#include "runner/image_file.h"
#include "runner/options.h"

namespace runner {

struct HostSetup {
  std::unique_ptr<host::Host> host;
  ImageOptions images;
};

// Throws Failure, which names the plug-in that can't be loaded.
HostSetup StartHost(const Options& options);

}  // namespace runner
