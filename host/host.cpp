#include "host/host.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>

#include "host/runtime/classes.h"
#include "host/runtime/entries.h"
#include "host/runtime/functions.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/sanitizer.h"

namespace host {
namespace runtime {
namespace {

HostState* current = nullptr;

void* Resolve(const char* name) {
  return name == nullptr ? nullptr : FindEntry(Origin::kResolver, name);
}

}  // namespace

HostState* CurrentState() { return current; }
void SetCurrentState(HostState* state) { current = state; }

void Complain(std::string error) {
  if (current != nullptr) current->host.census.Add(std::move(error));
}

}  // namespace runtime

namespace {

template <class T>
Ref<T> Made(T* object) {
  if (object == nullptr) throw Error("there isn't enough memory");
  return Ref<T>::Adopt(object);
}

}  // namespace

Host::Host(const Settings& hostSettings) : settings(hostSettings) {
  if (runtime::CurrentState() != nullptr) throw Error("a host lives already; end it first");
  state = std::make_unique<runtime::HostState>(*this);
  runtime::SetCurrentState(state.get());
}

Host::~Host() {
  runtime::SetCurrentState(nullptr);
  for (const auto& [data, record] : state->stringData) std::free(const_cast<void*>(data));
  void* library = state->library;
  state = nullptr;
  if (library != nullptr) dlclose(library);
}

Host& Host::Current() {
  if (runtime::CurrentState() == nullptr) throw Error("there is no host");
  return runtime::CurrentState()->host;
}

REALresolver Host::Resolver() const { return &runtime::Resolve; }

void Host::LoadPlugin(const std::filesystem::path& path) {
  if (state->library != nullptr) throw Error("this host has loaded a plug-in already");
  const std::string whole = std::filesystem::absolute(path).string();
  void* library = dlopen(whole.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw Error("the plug-in can't be loaded: " + std::string(dlerror()));
  void* entry = dlsym(library, "REALPluginMain");
  if (entry == nullptr) {
    dlclose(library);
    throw Error(whole + " isn't a plug-in: it has no REALPluginMain");
  }
  state->library = library;
  StartPlugin(reinterpret_cast<void (*)(REALresolver)>(entry));
}

void Host::StartPlugin(void (*pluginMain)(REALresolver)) {
#ifdef HOST_SANITIZED
  // What a plug-in takes as it starts is its own for the life of the process; that it is unloaded
  // here makes no leak of it.
  const __lsan::ScopedDisabler notALeak;
#endif
  pluginMain(Resolver());
}

Ref<Picture> Host::NewPicture(int32_t width, int32_t height) {
  return NewPicture(width, height, runtime::FreshLayout(settings, false));
}

Ref<Picture> Host::NewPicture(int32_t width, int32_t height, const PictureLayout& layout) {
  if (layout.storage == Storage::kVector) throw Error("a vector picture needs its paint");
  const std::string fault = runtime::WhyNoPicture(settings, width, height, layout);
  if (!fault.empty()) throw Error(fault);
  return Made(runtime::MakePicture(*state, width, height, layout));
}

Ref<Picture> Host::NewPictureOver(const ForeignPixels& pixels, const PictureLayout& layout) {
  const std::string fault = runtime::WhyNoPictureOver(settings, pixels, layout);
  if (!fault.empty()) throw Error(fault);
  return Made(runtime::MakePictureOver(*state, pixels, layout));
}

Ref<Picture> Host::NewVectorPicture(int32_t width, int32_t height, VectorPaint paint) {
  if (!paint) throw Error("a vector picture needs its paint");
  PictureLayout layout;
  layout.storage = Storage::kVector;
  const std::string fault = runtime::WhyNoPicture(settings, width, height, layout);
  if (!fault.empty()) throw Error(fault);
  Ref<Picture> picture = Made(runtime::MakePicture(*state, width, height, layout));
  picture->State().paint = std::move(paint);
  return picture;
}

Ref<Graphics> Host::NewGraphics(const Ref<Picture>& picture) {
  if (!picture || !picture->State().HasMemory()) throw Error("there are no pixels to draw on");
  return Made(state->objects.Add(new Graphics(picture)));
}

Ref<String> Host::NewString(std::string_view bytes, uint32_t encoding) {
  return Made(state->objects.Add(new String(std::string(bytes), encoding)));
}

Ref<MemoryBlock> Host::NewMemoryBlock(size_t size) {
  return Made(runtime::MakeMemoryBlock(*state, size));
}

Ref<MemoryBlock> Host::NewMemoryBlock(std::span<const uint8_t> bytes) {
  Ref<MemoryBlock> block = NewMemoryBlock(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block->Bytes().begin());
  return block;
}

Ref<Instance> Host::NewBare(std::string_view className) {
  const bool picture = SameName(className, "Picture");
  Object* made = picture ? nullptr : runtime::MakeInstance(*state, className);
  if (made == nullptr) throw Error("no class of this host's is called " + std::string(className));
  return Ref<Instance>::Adopt(static_cast<Instance*>(made));
}

Ref<Instance> Host::New(std::string_view className) {
  Ref<Instance> instance = NewBare(className);
  std::vector<const RegisteredClass*> line;
  for (const RegisteredClass* of = instance->Class(); of != nullptr; of = of->super) {
    line.insert(line.begin(), of);
  }
  for (const RegisteredClass* of : line) {
    if (of->constructor == nullptr) continue;
    reinterpret_cast<void (*)(REALobject)>(of->constructor)(instance.Handle());
  }
  return instance;
}

Value Host::Get(const Ref<Instance>& instance, std::string_view property) {
  if (!instance) throw Error("the instance is nil");
  return runtime::GetProperty(*state, *instance, property);
}

void Host::Set(const Ref<Instance>& instance, std::string_view property, const Value& value) {
  if (!instance) throw Error("the instance is nil");
  runtime::SetProperty(*state, *instance, property, value);
}

std::vector<std::string> Host::ExceptionClasses() {
  const auto names = runtime::ExceptionClasses();
  return {names.begin(), names.end()};
}

std::optional<Exception> Host::TakeException() {
  return std::exchange(state->raised, std::nullopt);
}

}  // namespace host
