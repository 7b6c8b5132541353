// The plug-in on a host, with the pictures that all contenders of a case work on.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/host.h"

namespace bench {

using Picture = host::Ref<host::Picture>;

struct Size {
  int32_t width = 0;
  int32_t height = 0;

  int64_t Pixels() const { return int64_t{width} * height; }
};

// The channels of a pixel, and the fourth byte as it stands in memory.
struct Rgb {
  int red = 0, green = 0, blue = 0, fourth = 0;
};

// Where a call's result lies: in memory that is there already, as benchmarks of libraries have it,
// or in a picture that the host makes for the call, as programs have it.
enum class Output { prepared, fresh };

// How a picture lies in memory; `rows` is a console application's picture.
enum class Layout { rgba, argb, rows };

const char* NameOf(Layout layout);

// Starts a plug-in with a resolver, and keeps it loaded.
using Starter = std::function<void(host::Host&, REALresolver)>;

// One at a time, since there is one host at a time.
class Stage {
 public:
  // `source` and `target` are the layouts of the pictures that a case makes and of results.
  Stage(const Starter& start, Layout source, Layout target);
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // A source whose pixel (x, y) is `colour(x, y)`, opaque.
  template <class Colour>
  Picture Paint(Size size, const Colour& colour) {
    Picture picture = host_->NewPicture(size.width, size.height, sourceLayout_);
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) PutSource(picture->Row(y), x, colour(x, y));
    }
    return picture;
  }

  // The picture that prepared results are written into, made at the first use. It is the result of
  // any call that makes one of that size.
  const Picture& Target(Size size);
  // Fills it with something that no operation writes.
  void SpoilTarget();
  // The string that prepared results are; the plug-in's bytes aren't copied into it.
  const host::Ref<host::String>& TargetString();

  void SetOutput(Output output) { output_ = output; }

  // A call of a registered function with its arguments in place. Throws host::Error where they
  // don't fit its declaration.
  template <class R, class... A>
  std::function<R()> Bind(std::string_view className, std::string_view name,
                          const A&... arguments) {
    const size_t count = sizeof...(A) - (className.empty() ? 0 : 1);
    const host::Callable& method = host_->registry.Find(className, name, count);
    host::native::Check(method, false, host::native::kResultOf<R>, {host::native::kArgument<A>...});
    void* const function = method.function;
    return [function, arguments...]() -> R {
      return host::native::Invoke<R>(function, host::native::Pass(arguments)...);
    };
  }

  // The same for an assignment to a get/set pair, with the value as the last argument.
  template <class... A>
  std::function<void()> BindSetter(std::string_view className, std::string_view name,
                                   const A&... arguments) {
    const size_t count = sizeof...(A) - 2;
    const host::Callable& method = host_->registry.Find(className, name, count);
    host::native::Check(method, true, host::native::kResultOf<void>,
                        {host::native::kArgument<A>...});
    void* const setter = method.setter;
    return [setter, arguments...] {
      host::native::Invoke<void>(setter, host::native::Pass(arguments)...);
    };
  }

  host::Host& Host() { return *host_; }

 private:
  void PutSource(uint8_t* row, int32_t x, Rgb colour) const;

  host::PictureLayout sourceLayout_;
  std::unique_ptr<host::Host> host_;
  Output output_ = Output::fresh;
  Picture target_;
  host::Ref<host::String> targetString_;

  friend struct StageEntries;
};

// The channels of pixel x of a row.
Rgb ReadPixel(const host::PictureLayout& layout, const uint8_t* row, int32_t x);
// Whether pixel x of a row is this colour and as opaque as its layout has it.
bool IsOpaquePixel(const host::PictureLayout& layout, const uint8_t* row, int32_t x, Rgb colour);

}  // namespace bench
