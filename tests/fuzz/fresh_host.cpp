#include "tests/fuzz/fresh_host.h"

#include <cstdlib>
#include <cstring>

#include "classes/lut3d.h"
#include "classes/sepia.h"
#include "pixels/editor.h"
#include "plugin/binding/runtime.h"
#include "plugin/entry.h"
#include "plugin/tables.h"

namespace fuzz {
namespace {

REALclassDefinition* const kDefinitions[] = {&PictureSepiaClass, &Lut3DClass, &PictureExtension};
constexpr size_t kCount = sizeof kDefinitions / sizeof *kDefinitions;

// The definitions as they were compiled; registration changes them.
struct Compiled {
  Compiled() {
    for (size_t i = 0; i < kCount; ++i) definitions[i] = *kDefinitions[i];
  }
  void PutBack() const {
    for (size_t i = 0; i < kCount; ++i) *kDefinitions[i] = definitions[i];
    IsDesktop = IsConsole = false;
    CurrentREALControlVersion = 0;
  }
  REALclassDefinition definitions[kCount];
};

// Hosts of definition version 9 get rows of their own, for the life of the process.
void FreeShortRows() {
  if (CurrentREALControlVersion > kLastShortDefinition) return;
  for (const REALclassDefinition* definition : kDefinitions) {
    REALshortClassDefinition rows;
    std::memcpy(&rows, definition, sizeof rows);
    std::free(rows.properties);
    std::free(rows.methods);
    std::free(rows.sharedProperties);
    std::free(rows.sharedMethods);
  }
}

std::unique_ptr<host::Host> Started(const host::Settings& settings) {
  static const Compiled compiled;
  compiled.PutBack();
  auto made = std::make_unique<host::Host>(settings);
  made->StartPlugin(&REALPluginMain);
  return made;
}

// The plug-in keeps the framework that it loads, and its functions, for the life of the process:
// all of them are looked up once, so that no later host is asked through an earlier one's
// framework.
void FindPlatformFunctions() {
  const std::unique_ptr<host::Host> first = Started({});
  const auto world = first->NewPicture(1, 1, host::PictureLayout::GraphicsWorld());
  first->Call<bool>(first->Method("Picture", "ScrollVerticalKRT"), world, 1, false, false);
}

}  // namespace

FreshHost::FreshHost(const host::Settings& settings) {
  static const bool found = (FindPlatformFunctions(), true);
  if (found) host = Started(settings);
}

FreshHost::~FreshHost() {
  host.reset();
  FreeShortRows();
}

}  // namespace fuzz
