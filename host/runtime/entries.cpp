#include "host/runtime/entries.h"

#include <map>
#include <string>
#include <vector>

#include "host/declaration.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"

namespace host::runtime {
namespace {

// One function under two names needs two guards, so its second row differs in what failure returns,
// which means nothing to a function without a result.
template <auto function, auto failure = 0>
Entry Row(const char* name, Origin origin = Origin::kResolver, const char* declaration = nullptr) {
  GuardedCall<function, failure>::name = name;
  return {name, origin, declaration,
          reinterpret_cast<void*>(&GuardedCall<function, failure>::Enter)};
}

std::vector<Entry> MakeEntries() {
  return {
      Row<RegisterPluginVersion>("RegisterPluginVersion"),
      Row<GetHostVersion>("REALGetRBVersion"),
      Row<RegisterClass>("PluginRegisterClass"),
      Row<RegisterClassExtension>("PluginRegisterClassExtension"),
      Row<RegisterMethod>("PluginRegisterMethod"),

      Row<LockObject>("REALLockObject"),
      Row<UnlockObject>("REALUnlockObject"),
      Row<NewInstance>("PluginNewInstance"),
      Row<ClassReference>("pluginObjectType"),
      Row<LoadObjectMethod>("REALLoadObjectMethod"),
      Row<LoadGlobalMethod>("REALLoadGlobalMethod"),
      Row<RaiseException>("RuntimeRaiseException"),

      Row<GetPropertyInt>("REALGetPropValueInt"),
      Row<GetPropertyBool>("REALGetPropValueBool"),
      Row<SetPropertyInt>("REALSetPropValueInt"),
      Row<SetPropertyString>("REALSetPropValueString"),
      Row<SetPropertyUInt32>("REALSetPropValueUInt32"),

      Row<LockString>("REALLockString"),
      Row<UnlockString>("REALUnlockString"),
      Row<BuildString>("REALBuildString"),
      Row<GetStringEncoding>("REALGetStringEncoding"),
      Row<SetStringEncoding>("REALSetStringEncoding"),
      Row<ConvertString>("REALConvertString"),
      Row<GetStringData>("PluginGetStringData"),
      Row<DisposeStringData>("PluginDisposeStringData"),
      Row<StringGetCString>("StringGetCString"),
      Row<LenB>("LenB", Origin::kGlobalMethod, "LenB(s as string) as integer"),

      Row<LockDescription>("lockPictureDescription"),
      Row<LockDescriptionAs>("REALLockPictureDescription"),
      Row<UnlockDescription>("unlockPictureDescription"),
      Row<PictureClearCache>("REALPictureClearCache"),
      Row<NewPicture>("newPicture"),
      Row<BuildPictureFromBuffer>("REALBuildPictureFromBuffer"),
      Row<PictureGraphics>("pluginPictureGraphicsGetter"),
      Row<PictureMask>("REALGetPictureMask"),
      Row<PictureConstructor>("Picture.Constructor", Origin::kPictureMethod,
                              "Constructor(width as integer, height as integer)"),
      Row<DrawLine>("RuntimeGraphicsDrawLine"),
      Row<DrawPicture>("RuntimeGraphicsDrawPicture"),
      Row<DrawPicture, 1>("Graphics.DrawPicture", Origin::kGraphicsMethod,
                          "DrawPicture(image as picture, x as integer, y as integer, "
                          "w as integer, h as integer, sx as integer, sy as integer, "
                          "sw as integer, sh as integer)"),

      Row<NewMemoryBlock>("newMemoryBlock"),
      Row<MemoryBlockPointer>("memoryBlockGetPtr"),
      Row<MemoryBlockSize>("memoryBlockGetSize"),

      Row<ContextData>("CGBitmapContextGetData"),
      Row<ContextBitsPerPixel>("CGBitmapContextGetBitsPerPixel"),
      Row<ContextWidth>("CGBitmapContextGetWidth"),
      Row<ContextHeight>("CGBitmapContextGetHeight"),
      Row<ContextBytesPerRow>("CGBitmapContextGetBytesPerRow"),
      Row<ContextAlphaInfo>("CGBitmapContextGetAlphaInfo"),

      Row<FindFolder, kFolderNotFound>("FSFindFolder"),
      Row<UrlFromFolder>("CFURLCreateFromFSRef"),
      Row<UrlAppending>("CFURLCreateCopyAppendingPathComponent"),
      Row<BundleCreate>("CFBundleCreate"),
      Row<BundleLoad>("CFBundleLoadExecutable"),
      Row<BundleFunction>("CFBundleGetFunctionPointerForName"),
      Row<PlatformRelease>("CFRelease"),

      Row<UnlockPixels>("UnlockPixels", Origin::kQuickDraw),
      Row<ScrollRect>("ScrollRect", Origin::kQuickDraw),
      Row<NewRegion>("NewRgn", Origin::kQuickDraw),
      Row<DisposeRegion>("DisposeRgn", Origin::kQuickDraw),
      Row<GetGraphicsWorld>("GetGWorld", Origin::kQuickDraw),
      Row<SetGraphicsWorld>("SetGWorld", Origin::kQuickDraw),
  };
}

// An entry that goes by a declaration, which is read once.
struct Method {
  const Entry& entry;
  Declaration declaration;
};

std::vector<Method> ReadMethods() {
  std::vector<Method> methods;
  for (const Entry& entry : Entries()) {
    if (entry.declaration == nullptr) continue;
    methods.push_back({entry, ParseDeclaration(entry.declaration)});
  }
  return methods;
}

// Plug-ins ask for the same few declarations again and again.
const Declaration& ReadOnce(std::string_view text) {
  static std::map<std::string, Declaration, std::less<>> known;
  const auto found = known.find(text);
  if (found != known.end()) return found->second;
  return known.emplace(text, ParseDeclaration(text)).first->second;
}

bool Hidden(const Entry& entry) {
  const HostState* state = CurrentState();
  return state != nullptr && state->host.faults.Hidden(entry.name);
}

}  // namespace

std::span<const Entry> Entries() {
  static const std::vector<Entry> entries = MakeEntries();
  return entries;
}

bool IsEntry(std::string_view name) {
  for (const Entry& entry : Entries()) {
    if (name == entry.name) return true;
  }
  return false;
}

void* FindEntry(Origin origin, std::string_view name) {
  for (const Entry& entry : Entries()) {
    if (entry.origin == origin && name == entry.name) {
      return Hidden(entry) ? nullptr : entry.address;
    }
  }
  return nullptr;
}

void* FindMethod(Origin origin, std::string_view declaration) {
  static const std::vector<Method> methods = ReadMethods();
  const Declaration& wanted = ReadOnce(declaration);
  for (const Method& method : methods) {
    if (method.entry.origin == origin && SameSignature(method.declaration, wanted)) {
      return Hidden(method.entry) ? nullptr : method.entry.address;
    }
  }
  return nullptr;
}

}  // namespace host::runtime
