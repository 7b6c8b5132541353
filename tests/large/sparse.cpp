#include "tests/large/sparse.h"

#include <dlfcn.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <set>
#include <string_view>

namespace large {
namespace {

std::set<const void*>& Shown() {
  static std::set<const void*> shown;
  return shown;
}

const SparsePixels* SparseAt(const void* context) {
  return Shown().contains(context) ? static_cast<const SparsePixels*>(context) : nullptr;
}

void* FromHost(const char* name) { return host::Host::Current().Resolver()(name); }

template <class R>
R AskHost(const char* name, void* context) {
  return reinterpret_cast<R (*)(void*)>(FromHost(name))(context);
}

void* GetData(void* context) {
  const SparsePixels* sparse = SparseAt(context);
  return sparse ? sparse->Data() : AskHost<void*>("CGBitmapContextGetData", context);
}
size_t GetWidth(void* context) {
  const SparsePixels* sparse = SparseAt(context);
  return sparse ? static_cast<size_t>(sparse->Width())
                : AskHost<size_t>("CGBitmapContextGetWidth", context);
}
size_t GetHeight(void* context) {
  const SparsePixels* sparse = SparseAt(context);
  return sparse ? static_cast<size_t>(sparse->Height())
                : AskHost<size_t>("CGBitmapContextGetHeight", context);
}
size_t GetBytesPerRow(void* context) {
  const SparsePixels* sparse = SparseAt(context);
  return sparse ? sparse->RowBytes() : AskHost<size_t>("CGBitmapContextGetBytesPerRow", context);
}
size_t GetBitsPerPixel(void* context) {
  return SparseAt(context) ? 32 : AskHost<size_t>("CGBitmapContextGetBitsPerPixel", context);
}
uint32_t GetAlphaInfo(void* context) {
  return SparseAt(context) ? uint32_t{host::kAlphaNoneSkipFirst}
                           : AskHost<uint32_t>("CGBitmapContextGetAlphaInfo", context);
}

void* Resolve(const char* name) {
  const std::string_view wanted = name;
  if (wanted == "CGBitmapContextGetData") return reinterpret_cast<void*>(&GetData);
  if (wanted == "CGBitmapContextGetWidth") return reinterpret_cast<void*>(&GetWidth);
  if (wanted == "CGBitmapContextGetHeight") return reinterpret_cast<void*>(&GetHeight);
  if (wanted == "CGBitmapContextGetBytesPerRow") return reinterpret_cast<void*>(&GetBytesPerRow);
  if (wanted == "CGBitmapContextGetBitsPerPixel") return reinterpret_cast<void*>(&GetBitsPerPixel);
  if (wanted == "CGBitmapContextGetAlphaInfo") return reinterpret_cast<void*>(&GetAlphaInfo);
  return FromHost(name);
}

}  // namespace

SparsePixels::SparsePixels(int32_t pixelsWide, int32_t rowCount, int64_t bytesPerRow)
    : width(pixelsWide), height(rowCount), rowBytes(bytesPerRow) {
  void* memory = ::mmap(nullptr, static_cast<size_t>(rowBytes * height), PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  data = static_cast<uint8_t*>(memory);
}

SparsePixels::~SparsePixels() {
  Shown().erase(this);
  ::munmap(data, static_cast<size_t>(rowBytes * height));
}

void SparsePixels::Put(int32_t x, int32_t y, Rgb colour) const {
  const uint8_t bytes[] = {0, static_cast<uint8_t>(colour.red), static_cast<uint8_t>(colour.green),
                           static_cast<uint8_t>(colour.blue)};
  std::memcpy(At(x, y), bytes, sizeof bytes);
}

Rgb SparsePixels::Get(int32_t x, int32_t y) const {
  const uint8_t* bytes = At(x, y);
  return {bytes[1], bytes[2], bytes[3]};
}

bool SparsePixels::RowIsZero(int32_t y) const {
  const uint8_t* row = At(0, y);
  return *row == 0 && std::memcmp(row, row + 1, static_cast<size_t>(width) * 4 - 1) == 0;
}

SparseTest::SparseTest() {
  StartWithoutPlugin();
  if (support::PluginIsBundle()) {
    support::LoadBundle(Host(), support::PluginPath(), &Resolve);
    return;
  }
  library = ::dlopen(support::PluginPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw host::Error(::dlerror());
  void* pluginMain = ::dlsym(library, "REALPluginMain");
  if (pluginMain == nullptr) throw host::Error(::dlerror());
  reinterpret_cast<void (*)(REALresolver)>(pluginMain)(&Resolve);
}

PictureRef SparseTest::Show(SparsePixels& pixels) {
  Shown().insert(&pixels);
  const PictureRef picture =
      Host().NewPicture(1, 1, host::PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst));
  picture->SetDescriptionHook([&pixels](REALpictureDescription& description) {
    description.pictureData = &pixels;
    description.width = pixels.Width();
    description.height = pixels.Height();
  });
  return picture;
}

SparseTest::~SparseTest() {
  if (library != nullptr) ::dlclose(library);
}

}  // namespace large
