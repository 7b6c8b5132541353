#include "tests/support/macho_imports.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace support {

namespace {

constexpr std::string_view kSystem = "/usr/lib/libSystem.B.dylib";
constexpr std::string_view kCoreFoundation =
    "/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation";
constexpr std::string_view kCoreGraphics =
    "/System/Library/Frameworks/ApplicationServices.framework/Versions/A/Frameworks/"
    "CoreGraphics.framework/Versions/A/CoreGraphics";
constexpr std::string_view kCarbon =
    "/System/Library/Frameworks/Carbon.framework/Versions/A/Carbon";

REALresolver gHostResolver;

// Constant CFStrings say that they are strings by pointing here.
uintptr_t gConstantStringClass[8];

struct ConstantString {
  const void* isa;
  uint32_t flags;
  const char* text;
  size_t length;
};

// Null, and so a step that fails, for what isn't a constant CFString of 8-bit characters.
const char* TextOf(const void* object) {
  constexpr uint32_t kConstantBytes = 0x7C8;
  const auto* string = static_cast<const ConstantString*>(object);
  const bool valid = string->isa == gConstantStringClass && string->flags == kConstantBytes &&
                     std::strlen(string->text) == string->length;
  return valid ? string->text : nullptr;
}

template <class Function>
Function* Hosted(const char* name) {
  return reinterpret_cast<Function*>(gHostResolver(name));
}

void* AppendPathComponent(void* allocator, void* url, const void* name, uint8_t isDirectory) {
  using Append = void*(void*, void*, const void*, uint8_t);
  const char* text = TextOf(name);
  auto* append = Hosted<Append>("CFURLCreateCopyAppendingPathComponent");
  return text != nullptr && append != nullptr ? append(allocator, url, text, isDirectory) : nullptr;
}

void* FunctionPointerForName(void* bundle, const void* name) {
  using Find = void*(void*, const void*);
  const char* text = TextOf(name);
  auto* find = Hosted<Find>("CFBundleGetFunctionPointerForName");
  return text != nullptr && find != nullptr ? find(bundle, text) : nullptr;
}

void ZeroBytes(void* bytes, size_t count) { std::memset(bytes, 0, count); }

void Repeat16Bytes(void* bytes, const void* pattern, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    static_cast<uint8_t*>(bytes)[i] = static_cast<const uint8_t*>(pattern)[i % 16];
  }
}

void* CountedMalloc(size_t size) {
  return MemoryCallsOfBundles().Enter() ? std::malloc(size) : nullptr;
}
void* CountedCalloc(size_t count, size_t size) {
  return MemoryCallsOfBundles().Enter() ? std::calloc(count, size) : nullptr;
}

// What stands in for a function that the host doesn't have.
uintptr_t Nothing() { return 0; }
int32_t FolderNotFound() { return -43; }

// What binds a lazy import at its first call. They are bound before.
[[noreturn]] void BindAtFirstCall() { std::abort(); }

template <class Function>
void* Address(Function* function) {
  return reinterpret_cast<void*>(function);
}

// Null address: the host's, by name.
struct Import {
  std::string_view library;
  const char* symbol;
  void* address;
};

const Import kImports[] = {
    {kSystem, "___bzero", Address(ZeroBytes)},
    {kSystem, "_bzero", Address(ZeroBytes)},
    {kSystem, "_calloc", Address(CountedCalloc)},
    {kSystem, "_free", Address(std::free)},
    {kSystem, "_malloc", Address(CountedMalloc)},
    {kSystem, "_memcpy", Address(std::memcpy)},
    {kSystem, "_memmove", Address(std::memmove)},
    {kSystem, "_memset", Address(std::memset)},
    {kSystem, "_memset_pattern16", Address(Repeat16Bytes)},
    {kSystem, "_strlen", Address<size_t(const char*)>(std::strlen)},
    {kSystem, "dyld_stub_binder", Address(BindAtFirstCall)},
    {kCoreFoundation, "___CFConstantStringClassReference", gConstantStringClass},
    {kCoreFoundation, "_CFBundleCreate", nullptr},
    {kCoreFoundation, "_CFBundleGetFunctionPointerForName", Address(FunctionPointerForName)},
    {kCoreFoundation, "_CFBundleLoadExecutable", nullptr},
    {kCoreFoundation, "_CFRelease", nullptr},
    {kCoreFoundation, "_CFURLCreateCopyAppendingPathComponent", Address(AppendPathComponent)},
    {kCoreFoundation, "_CFURLCreateFromFSRef", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetAlphaInfo", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetBitsPerPixel", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetBytesPerRow", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetData", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetHeight", nullptr},
    {kCoreGraphics, "_CGBitmapContextGetWidth", nullptr},
    {kCarbon, "_FSFindFolder", nullptr},
};

}  // namespace

MemoryCalls& MemoryCallsOfBundles() {
  static MemoryCalls calls;
  return calls;
}

void* MacImport(REALresolver resolver, std::string_view library, std::string_view symbol) {
  gHostResolver = resolver;
  for (const Import& import : kImports) {
    if (import.library != library || import.symbol != symbol) continue;
    if (import.address != nullptr) return import.address;
    const char* plainName = import.symbol + 1;  // symbols carry an underscore before the C name
    if (void* hosted = resolver(plainName)) return hosted;
    return symbol == "_FSFindFolder" ? Address(FolderNotFound) : Address(Nothing);
  }
  return nullptr;
}

}  // namespace support
