#include "tests/faults/plugin_statics.h"

#include <link.h>

#include <span>

#include "tests/support/fixture.h"

namespace faults {

namespace {

struct Search {
  uintptr_t address;
  std::span<uint8_t> found;
};

// The zero-filled end of the writable segment of the module that an address lies in.
int Look(dl_phdr_info* module, size_t, void* data) {
  auto* search = static_cast<Search*>(data);
  bool inside = false;
  std::span<uint8_t> zeroed;
  for (int i = 0; i < module->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = module->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    const uintptr_t begin = module->dlpi_addr + segment.p_vaddr;
    inside = inside || (search->address >= begin && search->address < begin + segment.p_memsz);
    if ((segment.p_flags & PF_W) != 0) {
      zeroed = {reinterpret_cast<uint8_t*>(begin + segment.p_filesz),
                segment.p_memsz - segment.p_filesz};
    }
  }
  if (!inside) return 0;
  search->found = zeroed;
  return 1;
}

// Any function that the plug-in has registered.
void* FunctionOf(const host::Registry& registry) {
  for (const host::RegisteredClass& known : registry.Classes()) {
    for (const host::Callable& method : known.methods) return method.function;
  }
  for (const host::Callable& method : registry.GlobalMethods()) return method.function;
  return nullptr;
}

std::span<uint8_t> ZeroedMemoryOf(const host::Host& host) {
  if (support::PluginIsBundle()) return support::LoadedBundle().Zeroed();
  Search search{reinterpret_cast<uintptr_t>(FunctionOf(host.registry)), {}};
  dl_iterate_phdr(&Look, &search);
  return search.found;
}

// The sanitizer knows what lies between the variables, and would complain.
__attribute__((no_sanitize("address"))) void Copy(volatile uint8_t* to,
                                                  const volatile uint8_t* from, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = from[i];
}

}  // namespace

PluginStatics::PluginStatics(const host::Host& host) {
  const std::span<uint8_t> zeroed = ZeroedMemoryOf(host);
  if (zeroed.empty()) throw host::Error("the plug-in's variables aren't found");
  memory = zeroed.data();
  saved.resize(zeroed.size());
  Copy(saved.data(), memory, saved.size());
}

void PluginStatics::Restore() const { Copy(memory, saved.data(), saved.size()); }

}  // namespace faults
