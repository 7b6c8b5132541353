// A plug-in that announces how often it was started since it was loaded.

#include "plugin/binding/records.h"

namespace {
int starts = 0;
}

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver) {
  using Announce = void (*)(int32_t);
  reinterpret_cast<Announce>(resolver("RegisterPluginVersion"))(++starts);
}
