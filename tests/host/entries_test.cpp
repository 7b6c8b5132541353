// Every name that a plug-in may ask for is served, and none else.

#include "tests/host/host_test.h"

namespace host {
namespace {

constexpr const char* kResolverNames[] = {
    "PluginRegisterClass",
    "PluginRegisterClassExtension",
    "PluginRegisterMethod",
    "RegisterPluginVersion",
    "REALGetRBVersion",
    "REALLockObject",
    "REALUnlockObject",
    "REALLockString",
    "REALUnlockString",
    "REALBuildString",
    "REALGetStringEncoding",
    "REALConvertString",
    "REALSetStringEncoding",
    "PluginGetStringData",
    "PluginDisposeStringData",
    "StringGetCString",
    "lockPictureDescription",
    "REALLockPictureDescription",
    "unlockPictureDescription",
    "REALPictureClearCache",
    "newPicture",
    "REALBuildPictureFromBuffer",
    "pluginPictureGraphicsGetter",
    "REALGetPictureMask",
    "PluginNewInstance",
    "pluginObjectType",
    "REALLoadObjectMethod",
    "REALLoadGlobalMethod",
    "REALGetPropValueInt",
    "REALGetPropValueBool",
    "REALSetPropValueInt",
    "REALSetPropValueString",
    "REALSetPropValueUInt32",
    "RuntimeGraphicsDrawLine",
    "RuntimeGraphicsDrawPicture",
    "RuntimeRaiseException",
    "newMemoryBlock",
    "memoryBlockGetPtr",
    "memoryBlockGetSize",
    "CGBitmapContextGetData",
    "CGBitmapContextGetBitsPerPixel",
    "CGBitmapContextGetWidth",
    "CGBitmapContextGetHeight",
    "CGBitmapContextGetBytesPerRow",
    "CGBitmapContextGetAlphaInfo",
    "FSFindFolder",
    "CFURLCreateFromFSRef",
    "CFURLCreateCopyAppendingPathComponent",
    "CFBundleCreate",
    "CFBundleLoadExecutable",
    "CFBundleGetFunctionPointerForName",
    "CFRelease",
};
constexpr const char* kOtherEntries[] = {
    "LenB",         "Picture.Constructor", "Graphics.DrawPicture",
    "UnlockPixels", "ScrollRect",          "NewRgn",
    "DisposeRgn",   "GetGWorld",           "SetGWorld",
};

using EntriesTest = HostTest;

TEST_F(EntriesTest, TheResolverServesEveryName) {
  for (const char* name : kResolverNames) EXPECT_NE(host.Resolver()(name), nullptr) << name;
}

TEST_F(EntriesTest, TheResolverServesNothingElse) {
  for (const char* name : kOtherEntries) EXPECT_EQ(host.Resolver()(name), nullptr) << name;
  EXPECT_EQ(host.Resolver()(""), nullptr);
  EXPECT_EQ(host.Resolver()("newpicture"), nullptr) << "names are exact";
  EXPECT_EQ(host.Resolver()(nullptr), nullptr);
}

TEST_F(EntriesTest, AllEntriesListsEachOnce) {
  const std::vector<std::string> listed = FaultInjector::AllEntries();
  EXPECT_EQ(listed.size(), std::size(kResolverNames) + std::size(kOtherEntries));
  for (const char* name : kResolverNames) {
    EXPECT_EQ(std::count(listed.begin(), listed.end(), name), 1) << name;
  }
  for (const char* name : kOtherEntries) {
    EXPECT_EQ(std::count(listed.begin(), listed.end(), name), 1) << name;
  }
}

TEST_F(EntriesTest, AHiddenNameIsUnknownUntilItIsShown) {
  for (const char* name : kResolverNames) {
    void* entry = host.Resolver()(name);
    host.faults.Hide(name);
    EXPECT_EQ(host.Resolver()(name), nullptr) << name;
    EXPECT_TRUE(host.faults.Hidden(name));
    host.faults.Show(name);
    EXPECT_EQ(host.Resolver()(name), entry) << name;
  }
}

TEST_F(EntriesTest, HiddenMethodsCannotBeLoaded) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  const Ref<Graphics> graphics = host.NewGraphics(picture);
  auto* load = Find<void*(REALobject, const char*)>("REALLoadObjectMethod");
  auto* loadGlobal = Find<void*(const char*)>("REALLoadGlobalMethod");
  const char* construct = "Constructor(width as integer, height as integer)";
  const char* draw =
      "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as "
      "Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";
  const char* length = "LenB( s as string ) as integer";
  EXPECT_NE(load(AsObject(picture.Get()), construct), nullptr);
  EXPECT_NE(load(AsObject(graphics.Get()), draw), nullptr);
  EXPECT_NE(loadGlobal(length), nullptr);

  host.faults.Hide("Picture.Constructor");
  host.faults.Hide("Graphics.DrawPicture");
  host.faults.Hide("LenB");
  EXPECT_EQ(load(AsObject(picture.Get()), construct), nullptr);
  EXPECT_EQ(load(AsObject(graphics.Get()), draw), nullptr);
  EXPECT_EQ(loadGlobal(length), nullptr);
}

TEST_F(EntriesTest, MethodsOfOtherObjectsOrSignaturesAreNotFound) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  auto* load = Find<void*(REALobject, const char*)>("REALLoadObjectMethod");
  EXPECT_EQ(load(AsObject(picture.Get()), "Constructor(width as integer)"), nullptr);
  EXPECT_EQ(load(AsObject(picture.Get()), "LenB(s as string) as integer"), nullptr);
  const Ref<MemoryBlock> block = host.NewMemoryBlock(4);
  EXPECT_EQ(load(AsObject(block.Get()), "Constructor(width as integer, height as integer)"),
            nullptr);
  EXPECT_EQ(load(AsObject(picture.Get()), "Constructor(width as"), nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "REALLoadObjectMethod: \"Constructor(width as\""));
}

TEST_F(EntriesTest, TheVersionIsTheSettings) {
  host.settings.version = 2011.04;
  EXPECT_EQ(Find<double()>("REALGetRBVersion")(), 2011.04);
}

TEST(EntriesWithoutHostTest, FunctionsDoNothingWhenNoHostLives) {
  void (*lock)(REALobject) = nullptr;
  REALpicture (*newPicture)(int32_t, int32_t, int32_t) = nullptr;
  {
    const Host host;
    lock = Entry<void(REALobject)>(host, "REALLockObject");
    newPicture = Entry<REALpicture(int32_t, int32_t, int32_t)>(host, "newPicture");
  }
  int something = 0;
  lock(AsObject(&something));
  EXPECT_EQ(newPicture(2, 2, 32), nullptr);
}

}  // namespace
}  // namespace host
