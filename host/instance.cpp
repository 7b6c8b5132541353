#include "host/instance.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "host/registry.h"
#include "host/runtime/host_state.h"
#include "host/runtime/instance_data.h"

namespace host {
namespace {

constexpr size_t kGuard = 16;
constexpr uint8_t kGuardByte = 0xC3;

// Where the data of the class, and of its superclasses before it, end.
size_t DataEnd(const RegisteredClass& registered) {
  return registered.dataOffset + static_cast<size_t>(registered.dataSize);
}

}  // namespace

size_t runtime::FirstDataOffset() {
  return (sizeof(Instance) + kDataAlignment - 1) / kDataAlignment * kDataAlignment;
}

Instance* Instance::Make(const RegisteredClass& registeredClass) {
  const size_t end = DataEnd(registeredClass);
  void* memory = std::calloc(1, end + kGuard);
  if (memory == nullptr) return nullptr;
  std::fill_n(static_cast<uint8_t*>(memory) + end, kGuard, kGuardByte);
  Instance* instance = new (memory) Instance();
  instance->registered = &registeredClass;
  instance->exception.className = registeredClass.name;
  return instance;
}

Instance* Instance::MakeException(std::string className) {
  void* memory = std::calloc(1, sizeof(Instance));
  if (memory == nullptr) return nullptr;
  Instance* instance = new (memory) Instance();
  instance->exception.className = std::move(className);
  return instance;
}

// NOLINTNEXTLINE(misc-new-delete-overloads): made in place, in memory of the size it needs
void Instance::operator delete(void* memory) { std::free(memory); }

uint8_t* Instance::Data() {
  if (registered == nullptr) return nullptr;
  return reinterpret_cast<uint8_t*>(this) + registered->dataOffset;
}

std::string Instance::Describe() const { return ClassName() + " #" + std::to_string(Serial()); }

bool Instance::GuardIntact() const {
  if (registered == nullptr) return true;
  const uint8_t* guard = reinterpret_cast<const uint8_t*>(this) + DataEnd(*registered);
  return std::all_of(guard, guard + kGuard, [](uint8_t byte) { return byte == kGuardByte; });
}

void Instance::BeforeEnd() {
  auto* const self = reinterpret_cast<REALobject>(this);
  for (const RegisteredClass* of = registered; of != nullptr; of = of->super) {
    if (of->destructor != nullptr) reinterpret_cast<void (*)(REALobject)>(of->destructor)(self);
  }
  if (!GuardIntact()) runtime::Complain(Describe() + " was written behind its data");
}

}  // namespace host
