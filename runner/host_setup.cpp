#include "runner/host_setup.h"

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/layouts.h"
#include "runner/plugin_path.h"

namespace runner {

HostSetup StartHost(const Options& options) {
  HostSetup setup;
  host::Settings settings;
  settings.version = options.hostVersion;
  settings.application = options.application;
  ChooseLayouts(options.layout, &settings, &setup.images);
  setup.images.pixelLimit = options.pixelLimit;
  setup.images.damage = options.damage;
  setup.images.toSrgb = options.toSrgb;
  setup.images.keepAlpha = options.keepAlpha;
  setup.images.warn = options.strict ? [](const std::string& message) { throw Failure(message); }
                                     : Warn(WarnOnStandardError);
  setup.save = options.save;
  setup.save.warn = setup.images.warn;
  const std::filesystem::path plugin = options.plugin.empty() ? FindPlugin() : options.plugin;
  RequireRegularFile(plugin);
  try {
    setup.host = std::make_unique<host::Host>(settings);
    // A name without a folder would be looked for where the system's libraries are.
    setup.host->LoadPlugin(std::filesystem::absolute(plugin));
  } catch (const host::Error& error) {
    throw Failure(error.what());
  }
  return setup;
}

}  // namespace runner
