#include "runner/host_setup.h"

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/layouts.h"
#include "runner/plugin_path.h"

namespace runner {

void ChooseFileOptions(const Options& options, const Warn& warn, host::Settings* settings,
                       ImageOptions* images, SaveOptions* save) {
  ChooseLayouts(options.layout, settings, images);
  images->pixelLimit = options.pixelLimit;
  images->damage = options.damage;
  images->toSrgb = options.toSrgb;
  images->keepAlpha = options.keepAlpha;
  images->warn = options.strict ? [](const std::string& message) { throw Failure(message); } : warn;
  *save = options.save;
  save->warn = images->warn;
}

HostSetup StartHost(const Options& options) {
  HostSetup setup;
  host::Settings settings;
  settings.version = options.hostVersion;
  settings.application = options.application;
  ChooseFileOptions(options, WarnOnStandardError, &settings, &setup.images, &setup.save);
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
