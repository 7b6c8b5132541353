// The bridges between this process and a bundle on 64-bit ARM, from both sides: what a bundle sends
// is called here as its compiler lays it out, and what reaches one is taken as its compiler takes
// it.
#include "tests/support/macho_calls.h"

#include <gtest/gtest.h>

#ifdef __aarch64__

#include <string>
#include <vector>

#include "host/error.h"
#include "host/host.h"

namespace {

template <class Function>
Function* As(void* address) {
  return reinterpret_cast<Function*>(address);
}

// A value in the low byte of a register, and rubbish above.
constexpr uint32_t kRubbish = 0xABCDEF00;
uint32_t RubbishFalse() { return kRubbish; }
uint32_t RubbishTrue() { return kRubbish | 1; }

std::vector<int64_t>& Seen() {
  static std::vector<int64_t> seen;
  return seen;
}

void Draw(void*, void*, int32_t x, int32_t y, int32_t w, int32_t h, int32_t sx, int32_t sy,
          int32_t sw, int32_t sh) {
  Seen() = {x, y, w, h, sx, sy, sw, sh};
}
void* LoadMethod(REALobject, const char*) { return reinterpret_cast<void*>(&Draw); }

template <auto function>
void* Always(const char*) {
  return reinterpret_cast<void*>(function);
}

TEST(MachoCalls, BooleansOfTheHostAreExtended) {
  for (const char* name :
       {"lockPictureDescription", "REALLockPictureDescription", "REALGetPropValueInt",
        "REALGetPropValueBool", "REALSetPropValueInt", "REALSetPropValueString",
        "REALSetPropValueUInt32", "PluginGetStringData", "CFBundleLoadExecutable"}) {
    REALresolver resolve = support::ResolverForBundle(Always<RubbishFalse>);
    EXPECT_EQ(As<uint32_t()>(resolve(name))(), 0U) << name;
    resolve = support::ResolverForBundle(Always<RubbishTrue>);
    EXPECT_EQ(As<uint32_t()>(resolve(name))(), 1U) << name;
  }
}

TEST(MachoCalls, TheFolderErrorIsExtended) {
  const auto find = [] { return uint32_t{0xABCDFFD5}; };
  const REALresolver resolve = support::ResolverForBundle(Always<+find>);
  EXPECT_EQ(As<int32_t()>(resolve("FSFindFolder"))(), -43);
}

TEST(MachoCalls, OtherFunctionsOfTheHostAreThemselves) {
  const REALresolver resolve = support::ResolverForBundle(Always<RubbishTrue>);
  EXPECT_EQ(resolve("newPicture"), reinterpret_cast<void*>(&RubbishTrue));
  const auto nothing = [](const char*) { return static_cast<void*>(nullptr); };
  EXPECT_EQ(support::ResolverForBundle(+nothing)("REALGetPropValueInt"), nullptr);
}

// The bundle puts the last two side by side, where the host looks for one.
TEST(MachoCalls, DrawPictureHasItsArgumentsSideBySide) {
  const REALresolver resolve = support::ResolverForBundle(Always<LoadMethod>);
  auto* load = As<void*(REALobject, const char*)>(resolve("REALLoadObjectMethod"));
  EXPECT_EQ(load(nullptr, "Other(x as integer)"), reinterpret_cast<void*>(&Draw));
  void* draw = load(nullptr, "DrawPicture(Image as Picture, x as Integer)");
  As<void(void*, void*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, uint64_t)>(draw)(
      nullptr, nullptr, 1, 2, 3, 4, 5, 6, uint64_t{0xFFFFFFF8} << 32 | 7);
  EXPECT_EQ(Seen(), (std::vector<int64_t>{1, 2, 3, 4, 5, 6, 7, -8}));
}

// What a host has registered under this declaration, bridged.
const host::Callable& Bridged(host::Host& host, const char* declaration, void* function,
                              void* setter = nullptr) {
  static REALmethodDefinition row;
  row = {function, setter, declaration, 0, {}};
  host.registry.AddGlobalMethod(&row);
  support::BridgeMethods(host.registry);
  return host.registry.GlobalMethods().back();
}

TEST(MachoCalls, BooleansOfMethodsAreExtended) {
  host::Host host;
  const auto scroll = [](void*, int64_t x, int64_t y, int32_t wrap, int32_t mask) {
    Seen() = {static_cast<int32_t>(x), static_cast<int32_t>(y), wrap, mask};
    return 1;
  };
  const host::Callable& method =
      Bridged(host,
              "ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as "
              "boolean) as boolean",
              reinterpret_cast<void*>(+scroll));
  As<void(void*, int32_t, int32_t, uint32_t, uint32_t)>(method.function)(nullptr, -1, 2, kRubbish,
                                                                         kRubbish | 1);
  EXPECT_EQ(Seen(), (std::vector<int64_t>{-1, 2, 0, 1}));
}

TEST(MachoCalls, BooleansOfAssignmentsAreExtended) {
  host::Host host;
  const auto get = [](void*, int32_t swap) { Seen() = {swap}; };
  const auto set = [](void*, int32_t swap, void*) { Seen() = {swap}; };
  const host::Callable& pair =
      Bridged(host, "EmbeddedMaskKRT(swap as boolean) as picture", reinterpret_cast<void*>(+get),
              reinterpret_cast<void*>(+set));
  As<void(void*, uint32_t)>(pair.function)(nullptr, kRubbish | 1);
  EXPECT_EQ(Seen(), (std::vector<int64_t>{1}));
  As<void(void*, uint32_t, void*)>(pair.setter)(nullptr, kRubbish, nullptr);
  EXPECT_EQ(Seen(), (std::vector<int64_t>{0}));
}

TEST(MachoCalls, RenderSamplesHasItsArgumentsSideBySide) {
  host::Host host;
  const auto render = [](void*, int32_t, int32_t, int32_t, int32_t, int32_t, uint32_t, uint32_t,
                         uint64_t outlineAndBits, uint64_t autoScale) {
    Seen() = {static_cast<int32_t>(outlineAndBits), static_cast<int32_t>(outlineAndBits >> 32),
              static_cast<int32_t>(autoScale)};
  };
  const host::Callable& method = Bridged(
      host,
      "RenderSamplesKRT(a as memoryblock, b as integer, c as integer, d as integer, e as integer, "
      "f as integer, g as color, h as color, i as color, j as integer, k as boolean) as picture",
      reinterpret_cast<void*>(+render));
  As<void(void*, int32_t, int32_t, int32_t, int32_t, int32_t, uint32_t, uint32_t, uint32_t, int32_t,
          uint32_t)>(method.function)(nullptr, 1, 2, 3, 4, 5, 6, 7, 0x203F4E, -16, kRubbish | 1);
  EXPECT_EQ(Seen(), (std::vector<int64_t>{0x203F4E, -16, 1}));
}

TEST(MachoCalls, AMethodThatIsTakenDifferentlyNeedsItsBridge) {
  for (const char* declaration : {"F(a as boolean)",
                                  "F(a as integer, b as integer, c as integer, "
                                  "d as integer, e as integer, f as integer, "
                                  "g as integer, h as integer)"}) {
    host::Host host;
    EXPECT_THROW(Bridged(host, declaration, reinterpret_cast<void*>(&RubbishTrue)), host::Error)
        << declaration;
  }
  host::Host host;
  const host::Callable& method = Bridged(host, "F(a as integer, b as double) as boolean",
                                         reinterpret_cast<void*>(&RubbishTrue));
  EXPECT_EQ(method.function, reinterpret_cast<void*>(&RubbishTrue));
}

}  // namespace

#endif
