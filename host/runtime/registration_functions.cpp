#include "host/runtime/functions.h"

namespace host::runtime {

void RegisterPluginVersion(HostState& state, int32_t version) {
  state.host.registry.Announce(version);
}

double GetHostVersion(HostState& state) { return state.host.settings.version; }

void RegisterClass(HostState& state, REALclassDefinition* definition) {
  state.host.registry.AddClass(definition, false);
}

void RegisterClassExtension(HostState& state, REALclassDefinition* definition) {
  state.host.registry.AddClass(definition, true);
}

void RegisterMethod(HostState& state, REALmethodDefinition* method) {
  state.host.registry.AddGlobalMethod(method);
}

}  // namespace host::runtime
