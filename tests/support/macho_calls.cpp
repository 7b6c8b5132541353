#include "tests/support/macho_calls.h"

#ifndef __aarch64__

namespace support {

REALresolver ResolverForBundle(REALresolver resolver) { return resolver; }
void BridgeMethods(const host::Registry&) {}
const Internals* InternalsOfBundle(const Internals* internals) { return internals; }

}  // namespace support

#else

#include <algorithm>
#include <string_view>

#include "host/error.h"

namespace support {

namespace {

template <class Function>
Function* As(void* address) {
  return reinterpret_cast<Function*>(address);
}
template <class Function>
void* CallAddress(Function* function) {
  return reinterpret_cast<void*>(function);
}

// A function that stands before another, and where it keeps that one's address.
struct Bridge {
  std::string_view name;
  bool assigns;
  void* enter;
  void** target;
};

void* Through(const Bridge& bridge, void* target) {
  *bridge.target = target;
  return bridge.enter;
}

// From the bundle to the host.

REALresolver gResolverOfHost;

// Functions of up to four words, none of them a double, whose result is narrower than 32 bits.
template <int place, class Result, class Extended>
struct ExtendsResult {
  static inline void* target = nullptr;
  static Extended Enter(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d) {
    return As<Result(uintptr_t, uintptr_t, uintptr_t, uintptr_t)>(target)(a, b, c, d);
  }
};
template <int place>
Bridge ExtendsBoolean(std::string_view name) {
  using Entry = ExtendsResult<place, uint8_t, uint32_t>;
  return {name, false, CallAddress(Entry::Enter), &Entry::target};
}

// Its last two arguments are on the stack, in the eight bytes that Linux gives to one.
void* gDrawPicture;
void DrawPicture(REALgraphics graphics, REALpicture image, int32_t x, int32_t y, int32_t w,
                 int32_t h, int32_t sx, int32_t sy, uint64_t swAndSh) {
  using Draw = void(REALgraphics, REALpicture, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                    int32_t, int32_t);
  As<Draw>(gDrawPicture)(graphics, image, x, y, w, h, sx, sy, static_cast<int32_t>(swAndSh),
                         static_cast<int32_t>(swAndSh >> 32));
}

void* gLoadObjectMethod;
void* LoadObjectMethod(REALobject object, const char* declaration) {
  void* method = As<void*(REALobject, const char*)>(gLoadObjectMethod)(object, declaration);
  if (method == nullptr || !std::string_view(declaration).starts_with("DrawPicture(")) {
    return method;
  }
  gDrawPicture = method;
  return CallAddress(DrawPicture);
}

const Bridge kHostFunctions[] = {
    ExtendsBoolean<0>("lockPictureDescription"),
    ExtendsBoolean<1>("REALLockPictureDescription"),
    ExtendsBoolean<2>("REALGetPropValueInt"),
    ExtendsBoolean<3>("REALGetPropValueBool"),
    ExtendsBoolean<4>("REALSetPropValueInt"),
    ExtendsBoolean<5>("REALSetPropValueString"),
    ExtendsBoolean<6>("REALSetPropValueUInt32"),
    ExtendsBoolean<7>("PluginGetStringData"),
    ExtendsBoolean<8>("CFBundleLoadExecutable"),
    {"FSFindFolder", false, CallAddress(ExtendsResult<9, int16_t, int32_t>::Enter),
     &ExtendsResult<9, int16_t, int32_t>::target},
    {"REALLoadObjectMethod", false, CallAddress(LoadObjectMethod), &gLoadObjectMethod},
};

void* Resolve(const char* name) {
  void* found = gResolverOfHost(name);
  if (found == nullptr) return nullptr;
  for (const Bridge& bridge : kHostFunctions) {
    if (bridge.name == name) return Through(bridge, found);
  }
  return found;
}

// From the host to the bundle.

template <class T>
struct ExtendedType {
  using Type = T;
};
template <>
struct ExtendedType<int8_t> {
  using Type = int32_t;
};

// Methods with booleans among their arguments.
template <int place, class R, class... A>
struct ExtendsArguments {
  static inline void* target = nullptr;
  static R Enter(A... arguments) {
    return As<R(typename ExtendedType<A>::Type...)>(target)(arguments...);
  }
};
template <int place, class R, class... A>
Bridge Extends(std::string_view name, R (*)(A...), bool assigns = false) {
  using Entry = ExtendsArguments<place, R, A...>;
  return {name, assigns, CallAddress(Entry::Enter), &Entry::target};
}

// Its last three arguments are on the stack: two words side by side, then the boolean.
void* gRenderSamples;
REALpicture RenderSamples(REALmemoryBlock samples, int32_t count, int32_t smooth, int32_t width,
                          int32_t height, int32_t outlineWidth, uint32_t back, uint32_t fore,
                          uint32_t outline, int32_t bits, int8_t autoScale) {
  using Render = REALpicture(REALmemoryBlock, int32_t, int32_t, int32_t, int32_t, int32_t, uint32_t,
                             uint32_t, uint64_t, uint64_t);
  const uint64_t outlineAndBits = outline | static_cast<uint64_t>(bits) << 32;
  return As<Render>(gRenderSamples)(samples, count, smooth, width, height, outlineWidth, back, fore,
                                    outlineAndBits, static_cast<uint32_t>(autoScale));
}

using ScrollOneWay = int8_t (*)(REALpicture, int32_t, int8_t, int8_t);
using ScrollBothWays = int8_t (*)(REALpicture, int32_t, int32_t, int8_t, int8_t);
using GetMask = REALpicture (*)(REALpicture, int8_t);
using SetMask = void (*)(REALpicture, int8_t, REALpicture);

const Bridge kMethods[] = {
    Extends<0>("ScrollVerticalKRT", ScrollOneWay()),
    Extends<1>("ScrollHorizontalKRT", ScrollOneWay()),
    Extends<2>("ScrollKRT", ScrollBothWays()),
    Extends<3>("EmbeddedMaskKRT", GetMask()),
    Extends<4>("EmbeddedMaskKRT", SetMask(), true),
    {"RenderSamplesKRT", false, CallAddress(RenderSamples), &gRenderSamples},
};

// Whether an argument is narrower than 32 bits, or one may be on the stack.
bool IsTakenDifferently(const host::Callable& method, bool assigns) {
  const host::Declaration& declaration = method.declaration;
  const auto isBoolean = [](const host::Parameter& parameter) {
    return !parameter.byref && parameter.type == host::Type::kBoolean;
  };
  const bool assignsBoolean = assigns && declaration.result == host::Type::kBoolean;
  const size_t inRegisters = 8 - (assigns ? 2 : 1);  // besides the object and the value
  return assignsBoolean || declaration.parameters.size() > inRegisters ||
         std::any_of(declaration.parameters.begin(), declaration.parameters.end(), isBoolean);
}

void BridgeFunction(const host::Callable& method, bool assigns, void** function) {
  if (*function == nullptr || !IsTakenDifferently(method, assigns)) return;
  for (const Bridge& bridge : kMethods) {
    if (bridge.assigns != assigns || bridge.name != method.declaration.name) continue;
    *function = Through(bridge, *function);
    return;
  }
  throw host::Error("no bridge to " + method.text);
}

void BridgeMethod(const host::Callable& method) {
  auto& changed = const_cast<host::Callable&>(method);
  BridgeFunction(method, false, &changed.function);
  BridgeFunction(method, true, &changed.setter);
}

const Internals* gInternals;

}  // namespace

REALresolver ResolverForBundle(REALresolver resolver) {
  gResolverOfHost = resolver;
  return Resolve;
}

// No host lets its registry be changed, and none but this one should.
void BridgeMethods(const host::Registry& registry) {
  for (const host::RegisteredClass& known : registry.Classes()) {
    for (const host::Callable& method : known.methods) BridgeMethod(method);
    for (const host::Property& property : known.properties) {
      if (!property.isField && property.type == host::Type::kBoolean) {
        throw host::Error("no bridge to " + property.name);
      }
    }
  }
  for (const host::Callable& method : registry.GlobalMethods()) BridgeMethod(method);
}

const Internals* InternalsOfBundle(const Internals* internals) {
  static Internals bridged;
  gInternals = internals;
  bridged = *internals;
  bridged.open = [](PictureEditor* editor, REALpicture picture, bool rasterize, bool modifies) {
    using Open = bool(PictureEditor*, REALpicture, uint32_t, uint32_t);
    return reinterpret_cast<Open*>(gInternals->open)(editor, picture, rasterize, modifies);
  };
  bridged.newPictureWriter = [](PictureWriter* writer, int32_t width, int32_t height, bool alpha) {
    using Make = bool(PictureWriter*, int32_t, int32_t, uint32_t);
    return reinterpret_cast<Make*>(gInternals->newPictureWriter)(writer, width, height, alpha);
  };
  return &bridged;
}

}  // namespace support

#endif
