// A host as the options describe it, with the plug-in loaded.
#pragma once

#include <memory>

#include "host/host.h"
#include "runner/files/image_reader.h"
#include "runner/files/image_writer.h"
#include "runner/options.h"

namespace runner {

struct HostSetup {
  std::unique_ptr<host::Host> host;
  ImageOptions images;
  SaveOptions save;
};

// How files are opened and saved, and how `settings` make pictures, as the options say. `warn` is
// told what goes on all the same, unless the options are strict.
void ChooseFileOptions(const Options& options, const Warn& warn, host::Settings* settings,
                       ImageOptions* images, SaveOptions* save);

// Throws Failure, which names the plug-in that can't be loaded.
HostSetup StartHost(const Options& options);

}  // namespace runner
