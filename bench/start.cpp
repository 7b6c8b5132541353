#include "bench/start.h"

#include <dlfcn.h>

#include "tests/support/internals.h"

namespace bench {

namespace {

constexpr struct {
  const char* name;
  InstructionSet set;
} kSets[] = {{"baseline", InstructionSet::baseline},
             {"avx2", InstructionSet::avx2},
             {"avx512", InstructionSet::avx512}};

// The library stays loaded: cases of one process use one plug-in.
void* Load(const char* path) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw host::Error(dlerror());
  return library;
}

using PluginMain = void(REALresolver);
using Table = const support::Internals*();

InstructionSet Named(std::string_view name) {
  for (const auto& known : kSets) {
    if (name == known.name) return known.set;
  }
  throw host::Error("instruction sets are baseline, avx2 and avx512, not " + std::string(name));
}

// Unloads what the stage before loaded, since a plug-in keeps what it asked its first host.
void StartFresh(const char* path, host::Host&, REALresolver resolver, InstructionSet forced) {
  static void* loaded = nullptr;
  if (loaded != nullptr) dlclose(loaded);
  loaded = Load(path);
  reinterpret_cast<PluginMain*>(dlsym(loaded, "REALPluginMain"))(resolver);
  if (forced == InstructionSet::unknown) return;
  const auto* internals = reinterpret_cast<Table*>(dlsym(loaded, "PictureInternals"))();
  if (forced > internals->findInstructionSet()) {
    throw host::Error("this processor doesn't have that instruction set");
  }
  *internals->instructionSet = forced;
}

}  // namespace

Starter MakeStarter(std::string_view instructionSet) {
  const bool forced = !instructionSet.empty();
  const InstructionSet set = forced ? Named(instructionSet) : InstructionSet::unknown;
  return [=](host::Host& host, REALresolver resolver) {
    StartFresh(forced ? PICTURE_INTERNALS : PICTURE_PLUGIN, host, resolver, set);
  };
}

std::string WidestInstructionSet() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("x86-64-v4")) return "avx512";
  if (__builtin_cpu_supports("avx2")) return "avx2";
#endif
  return "baseline";
}

}  // namespace bench
