// The embedded host: the runtime behind a picture plug-in, for programs that have none.
//
//   host::Host host;
//   host.LoadPlugin("Picture.so");
//   host::Ref<host::Picture> photo = host.NewPicture(640, 480);
//   auto inverted = host.Call<host::Ref<host::Picture>>(host.Method("Picture", "InvertKRT", 0),
//   photo);
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/call.h"
#include "host/census.h"
#include "host/error.h"
#include "host/faults.h"
#include "host/graphics.h"
#include "host/instance.h"
#include "host/memory_block.h"
#include "host/picture.h"
#include "host/registry.h"
#include "host/string_object.h"

namespace host {

namespace runtime {
struct HostState;
}

enum class Application { kDesktop, kConsole, kWeb };

// What the host does with a lock of a picture that is locked already. A plug-in holds two where a
// call is given one picture twice.
enum class LockManner {
  kNested,     // grants and counts it
  kSingle,     // refuses it
  kUncounted,  // refuses it; before 2012.0, too, a refused lock doesn't count, and an unlock that
               // follows it undoes the lock that was granted
  kCopied,     // grants each lock with a copy of the pixels, which its unlock writes back; pixels
               // that belong to somebody else, and graphics worlds, aren't copied
};

// What the host pretends to be. Layouts and colour may be changed at any time and hold for pictures
// made from then on; what the plug-in asked for once, it doesn't ask again.
struct Settings {
  double version = 2013.03;
  Application application = Application::kDesktop;
  LockManner lockManner = LockManner::kNested;
  uint32_t freshColour = 0xFFFFFF;  // of pictures just made, 0x00RRGGBB, alpha 255

  // What desktop applications give: by "newPicture" and by the picture's own constructor.
  PictureLayout opaqueLayout = PictureLayout::BitmapContext(kAlphaNoneSkipFirst);
  PictureLayout alphaLayout = PictureLayout::WithAlpha(kAlphaPremultipliedFirst);
  // What console and web applications give for both; "HasAlphaChannel" is true of the latter.
  PictureLayout consoleLayout = PictureLayout::RowTable();

  // Pictures that are larger aren't made.
  int32_t maximumSide = 0xFFFFFF;
  uint64_t maximumPixelBytes = sizeof(void*) == 8 ? uint64_t{3} << 30 : uint64_t{1} << 30;
};

// One at a time in a process: the functions that a plug-in calls carry no context, so they work on
// the host that lives. Objects left when the host ends lose what they hold, without running the
// plug-in. One thread.
class Host {
 public:
  // Throws Error while another host lives.
  explicit Host(const Settings& hostSettings = {});
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // The host that lives. Throws Error when there is none.
  static Host& Current();

  Settings settings;
  FaultInjector faults;
  Census census;
  Registry registry;

  // Finds the host's functions by name, as the plug-in gets it.
  REALresolver Resolver() const;

  // Loads a plug-in and calls its REALPluginMain; it is unloaded when the host ends, so that the
  // next host finds its static data fresh. Throws Error, which says why it can't be loaded.
  void LoadPlugin(const std::filesystem::path& path);
  // The same for an entry function that the caller found in its own way.
  void StartPlugin(void (*pluginMain)(REALresolver));

  // A picture as "newPicture" makes it, of any other layout, drawn from a function. Throw Error for
  // sizes that "newPicture" would refuse and layouts that can't be.
  Ref<Picture> NewPicture(int32_t width, int32_t height);
  Ref<Picture> NewPicture(int32_t width, int32_t height, const PictureLayout& layout);
  // A bitmap context of 32 bits over pixels that somebody else owns: what either writes, the other
  // sees. Its row padding is what the rows' distance leaves, its rendering is never cached, and
  // nobody watches the bytes around it.
  Ref<Picture> NewPictureOver(const ForeignPixels& pixels, const PictureLayout& layout);
  Ref<Picture> NewVectorPicture(int32_t width, int32_t height, VectorPaint paint);
  Ref<Graphics> NewGraphics(const Ref<Picture>& picture);
  Ref<String> NewString(std::string_view bytes, uint32_t encoding = kEncodingUTF8);
  Ref<MemoryBlock> NewMemoryBlock(size_t size);
  Ref<MemoryBlock> NewMemoryBlock(std::span<const uint8_t> bytes);
  // An instance of a registered class as a program makes it: data zero-filled, then the
  // constructor, those of superclasses first. NewBare leaves the constructors out, as
  // "PluginNewInstance" does, and makes exceptions too. The destructor runs when the last reference
  // goes. Throw Error for other classes.
  Ref<Instance> New(std::string_view className);
  Ref<Instance> NewBare(std::string_view className);

  // Registered methods; Registry::Find has the rules.
  const Callable& Method(std::string_view className, std::string_view nameOrDeclaration) const {
    return registry.Find(className, nameOrDeclaration);
  }
  const Callable& Method(std::string_view className, std::string_view name, size_t count) const {
    return registry.Find(className, name, count);
  }
  const Callable& GlobalMethod(std::string_view nameOrDeclaration) const {
    return registry.Find({}, nameOrDeclaration);
  }

  // host::Call and host::CallSetter, which have the rules.
  template <class R = void, class... A>
  R Call(const Callable& callable, const A&... arguments) {
    return host::Call<R>(callable, arguments...);
  }
  template <class... A>
  void CallSetter(const Callable& callable, const A&... arguments) {
    host::CallSetter(callable, arguments...);
  }

  // Properties of an instance by name, by field or accessor. Set converts as ConvertValue does; an
  // object or string set into a field is held by the field, and what it held before is let go.
  // Throw Error for a property that isn't there or can't be read or set.
  Value Get(const Ref<Instance>& instance, std::string_view property);
  void Set(const Ref<Instance>& instance, std::string_view property, const Value& value);

  // The exception that the plug-in raised since this was last asked; it reaches the program when
  // the registered function has returned. Of several, the last.
  std::optional<Exception> TakeException();

  // The names of the exception classes that a plug-in can raise; the first is the base of the
  // others.
  static std::vector<std::string> ExceptionClasses();

  // For the host's own functions.
  runtime::HostState& State() { return *state; }

 private:
  std::unique_ptr<runtime::HostState> state;
};

}  // namespace host
