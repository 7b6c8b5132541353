#include "tests/fuzz/input_host.h"

#include <map>
#include <optional>
#include <span>
#include <vector>

#include "classes/lut3d.h"
#include "classes/sepia.h"
#include "host/runtime/host_state.h"
#include "pixels/editor.h"
#include "plugin/binding/runtime.h"
#include "plugin/entry.h"
#include "plugin/tables.h"
#include "render/wu_line.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

REALclassDefinition* const kDefinitions[] = {&PictureSepiaClass, &Lut3DClass, &PictureExtension};
constexpr size_t kCount = std::size(kDefinitions);

// Rows of a table and what stood in them.
template <class Row>
class SavedRows {
 public:
  SavedRows(Row* rows, int32_t count) : first(rows), saved(rows, rows + count) {}
  void PutBack() const { std::copy(saved.begin(), saved.end(), first); }

 private:
  Row* first;
  std::vector<Row> saved;
};

// The tables as they were compiled. Registration changes them.
class CompiledTables {
 public:
  CompiledTables() {
    for (size_t i = 0; i < kCount; ++i) {
      const REALclassDefinition& definition = definitions[i] = *kDefinitions[i];
      methods.emplace_back(definition.methods, definition.methodCount);
      methods.emplace_back(definition.sharedMethods, definition.sharedMethodCount);
      properties.emplace_back(definition.properties, definition.propertyCount);
      properties.emplace_back(definition.sharedProperties, definition.sharedPropertyCount);
    }
    methods.emplace_back(gGlobalMethods, kGlobalMethodCount);
  }
  void PutBack() const {
    for (size_t i = 0; i < kCount; ++i) *kDefinitions[i] = definitions[i];
    for (const auto& rows : methods) rows.PutBack();
    for (const auto& rows : properties) rows.PutBack();
  }

 private:
  REALclassDefinition definitions[kCount];
  std::vector<SavedRows<REALmethodDefinition>> methods;
  std::vector<SavedRows<REALproperty>> properties;
};

// What a host's version decides on: what is registered, and how. The host reads the rows of methods
// and properties while it registers them, and never again.
struct Registered {
  host::Registry registry;
  REALclassDefinition definitions[kCount];
  int32_t definitionVersion = 0;
};

// A host for every input. Its registry is changed with its version.
class OnlyHost {
 public:
  host::Host& As(const host::Settings& settings) {
    host.settings = settings;
    if (current == settings.version) return host;
    if (current) std::swap(host.registry, byVersion[*current].registry);
    current = settings.version;
    const auto known = byVersion.find(settings.version);
    if (known == byVersion.end()) {
      Register(byVersion[settings.version]);
    } else {
      PutBack(known->second);
    }
    return host;
  }

 private:
  void Register(Registered& registered) {
    compiled.PutBack();
    CurrentREALControlVersion = 0;
    host.StartPlugin(&REALPluginMain);
    for (size_t i = 0; i < kCount; ++i) registered.definitions[i] = *kDefinitions[i];
    registered.definitionVersion = CurrentREALControlVersion;
  }

  void PutBack(Registered& registered) {
    std::swap(host.registry, registered.registry);
    for (size_t i = 0; i < kCount; ++i) *kDefinitions[i] = registered.definitions[i];
    CurrentREALControlVersion = registered.definitionVersion;
    rbversion = *current;
  }

  const CompiledTables compiled;
  std::map<double, Registered> byVersion;  // the current one's registry is in the host
  std::optional<double> current;
  host::Host host;
};

// Never destroyed: the end of the process runs nothing of it.
OnlyHost& Only() {
  // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): without memory the program ends
  static auto* const only = new OnlyHost;
  return *only;
}

}  // namespace

InputHost::InputHost(const host::Settings& settings) : host(Only().As(settings)) {
  IsDesktop = IsConsole = false;
  gOutLineColorR = gOutLineColorG = gOutLineColorB = 0;
}

InputHost::~InputHost() {
  host::runtime::HostState& state = host.State();
  if (!host.census.Take().holdings.empty()) Fail("left behind:\n" + host.census.Listing());
  for (const std::string& error : host.census.Errors()) Fail(error);
  Require(!host.TakeException(), "an exception was left behind");
  Require(state.currentWorld == &state.screen && state.currentDevice == &state.screenDevice,
          "a graphics world was left current");
  state.objects.ForgetEnded();
}

}  // namespace fuzz
