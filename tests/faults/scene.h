// One call of a registered entry: what it is given, and what came of it as a text.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/openings.h"
#include "tests/support/pictures.h"

namespace faults {

using support::PictureRef;
using support::Rgb;
using Paint = std::function<Rgb(int32_t x, int32_t y)>;

// The size of all pictures that aren't said to be of another.
inline constexpr int32_t kWidth = 5;
inline constexpr int32_t kHeight = 4;

Rgb Photo(int32_t x, int32_t y);  // coloured, no two pixels alike
Rgb Other(int32_t x, int32_t y);  // the same with other colours
Rgb Greys(int32_t x, int32_t y);
Rgb White(int32_t x, int32_t y);
Rgb Black(int32_t x, int32_t y);

// "5 x 4: 0a141e ...", row by row; "nil"; "5 x 4: no pixels" for a vector picture.
std::string Text(const PictureRef& picture);
// The text of a picture painted so.
std::string Painted(const Paint& paint, int32_t width = kWidth, int32_t height = kHeight);
std::string Text(bool value);
std::string Text(int32_t value);
std::string Text(double value);
// Every byte in hexadecimal.
std::string TextOfBytes(std::string_view bytes);

// What a picture is in the place of what it should be: itself, the opaque copy that a host draws of
// it, or a picture just made, where the drawing failed.
enum class Stand { kItself, kDrawn, kBlank };

// Where the faults begin and end: around the call alone.
struct Watch {
  std::function<void()> begin;
  std::function<void()> end;
};

class Scene {
 public:
  Scene(host::Host& livingHost, const Opening& pictureOpening, const host::Callable* calledMethod,
        const Watch& callWatch, std::vector<Stand> standIns)
      : host(livingHost),
        opening(pictureOpening),
        callable(calledMethod),
        watch(callWatch),
        stands(std::move(standIns)) {}

  // A picture that can be opened in the way of this scene, and that the call must not change.
  PictureRef Make(const Paint& paint, int32_t width = kWidth, int32_t height = kHeight);
  // The same for a call that may change it.
  PictureRef MakeChanging(const Paint& paint, int32_t width = kWidth, int32_t height = kHeight);
  // A picture as the host makes them, which the call may change.
  PictureRef MakeNative(const Paint& paint);

  template <class R = void, class... A>
  R Call(const A&... arguments) {
    return During([&] { return host.Call<R>(*callable, arguments...); });
  }
  template <class... A>
  void Assign(const A&... arguments) {
    During([&] { host.CallSetter(*callable, arguments...); });
  }
  template <class Function>
  auto During(const Function& function) {
    const struct Span {
      const Watch& watch;
      explicit Span(const Watch& spanWatch) : watch(spanWatch) { watch.begin(); }
      ~Span() { watch.end(); }
    } span(watch);
    return function();
  }

  host::Host& Host() { return host; }
  const Opening& Way() const { return opening; }
  // What the call must not have changed is as it was.
  bool SourcesUntouched() const;
  size_t PicturesMade() const { return made; }

 private:
  struct Kept {
    PictureRef picture;
    std::vector<uint8_t> bytes;
  };

  host::Host& host;
  const Opening& opening;
  const host::Callable* callable;
  const Watch& watch;
  std::vector<Stand> stands;
  size_t made = 0;
  std::vector<Kept> kept;
};

}  // namespace faults
