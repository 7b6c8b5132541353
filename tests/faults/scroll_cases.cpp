// Scrolling, which changes the picture that it is called on: wholly, or not at all.
#include "host/quickdraw.h"
#include "tests/faults/cases.h"

namespace faults {

namespace {

constexpr int32_t kRight = 1;
constexpr int32_t kDown = 1;

// The paint after a scroll that wraps.
Paint Rotated(const Paint& paint, int32_t right, int32_t down) {
  return [=](int32_t x, int32_t y) {
    return paint((x + kWidth - right) % kWidth, (y + kHeight - down) % kHeight);
  };
}

std::string PictureIs(bool result, const Paint& paint) {
  return Text(result) + " " + Painted(paint);
}

std::string After(bool result, const PictureRef& picture) {
  const bool restored = host::CurrentGraphicsWorld() == nullptr;
  return Text(result) + " " + Text(picture) + (restored ? "" : ", another world is current");
}

Case Scrolls(std::string entry, std::string label, bool failure) {
  Case row{"Picture", std::move(entry), Part::kMethod, std::move(label)};
  row.failure = PictureIs(failure, Photo);
  row.sources = 1;
  row.inPlace = true;
  return row;
}

const char* const kVertical =
    "ScrollVerticalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean";
const char* const kHorizontal =
    "ScrollHorizontalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean";
const char* const kBoth =
    "ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as "
    "boolean";

// Along one axis, around its end.
Case WrapsAlong(const char* entry, bool failure) {
  Case row = Scrolls(entry, "wrapping", failure);
  row.run = [](Scene& scene) {
    const PictureRef picture = scene.MakeChanging(Photo);
    const bool result = scene.Call<bool>(picture, 1, true, false);
    return After(result, picture);
  };
  const bool vertical = entry == kVertical;
  const Paint moved = Rotated(Photo, vertical ? 0 : kRight, vertical ? kDown : 0);
  row.also = [=](std::string_view failing) -> Texts {
    // The host says that there are no rows, or no columns; or it lets the rows be locked to which
    // an application that is a desktop's for sure has no right.
    if (!OpensPictures(failing)) return {};
    return {PictureIs(true, Photo), PictureIs(true, moved)};
  };
  return row;
}

// Along one axis with the mask, which is scrolled first.
Case WrapsMaskAlong(const char* entry, bool failure) {
  Case row = WrapsAlong(entry, failure);
  row.label = "wrapping, with the mask";
  row.run = [](Scene& scene) {
    const PictureRef picture = scene.MakeChanging(Photo);
    const PictureRef mask = scene.MakeNative(Greys);
    picture->SetMask(mask);
    const bool result = scene.Call<bool>(picture, 1, true, true);
    return After(result, picture) + "; " + Text(mask);
  };
  const bool vertical = entry == kVertical;
  const int32_t right = vertical ? 0 : kRight;
  const int32_t down = vertical ? kDown : 0;
  const std::string moved = Painted(Rotated(Photo, right, down));
  const std::string mask = "; " + Painted(Greys);
  const std::string movedMask = "; " + Painted(Rotated(Greys, right, down));
  row.failure += mask;
  row.also = [=](std::string_view failing) -> Texts {
    const Texts all = {"true " + moved + mask,
                       "true " + Painted(Photo) + movedMask,
                       "true " + Painted(Photo) + mask,
                       "true " + moved + movedMask,
                       Text(failure) + " " + Painted(Photo) + movedMask,
                       Text(failure) + " " + Painted(Photo) + mask};
    const bool some = OpensPictures(failing) || failing == "REALGetPictureMask" ||
                      failing == "REALLockObject" || failing == "memory";
    return some ? all : Texts{};
  };
  return row;
}

// First along the one axis, then along the other, whatever came of the first.
Case WrapsBoth() {
  Case row = Scrolls(kBoth, "wrapping", false);
  row.run = [](Scene& scene) {
    const PictureRef picture = scene.MakeChanging(Photo);
    const bool result = scene.Call<bool>(picture, kRight, kDown, true, false);
    return After(result, picture);
  };
  row.also = [](std::string_view failing) -> Texts {
    if (!OpensPictures(failing) && failing != "memory") return {};
    const Paint right = Rotated(Photo, kRight, 0);
    const Paint down = Rotated(Photo, 0, kDown);
    return {PictureIs(true, down), PictureIs(false, right), PictureIs(true, right),
            PictureIs(true, Photo), PictureIs(true, Rotated(Photo, kRight, kDown))};
  };
  return row;
}

// By QuickDraw, which moves what a graphics world holds. A call that can't be made is left out.
Case Shifts(const char* entry, bool failure) {
  Case row = Scrolls(entry, "shifting", failure);
  const bool both = std::string_view(entry) == kBoth;
  row.run = [both](Scene& scene) {
    const PictureRef picture = scene.MakeChanging(Photo);
    const bool result = both ? scene.Call<bool>(picture, kRight, kDown, false, false)
                             : scene.Call<bool>(picture, 1, false, false);
    return After(result, picture);
  };
  row.exactly = [=](std::string_view failing) -> std::optional<Texts> {
    const auto shifted = [](int32_t right, int32_t down) {
      return Painted([=](int32_t x, int32_t y) {
        return x < right || y < down ? Rgb{255, 255, 255} : Photo(x - right, y - down);
      });
    };
    const bool locks = failing == "lockPictureDescription" ||
                       (failing == "unlockPictureDescription" && LockLeftBehindMatters());
    if (!locks && !IsQuickDrawFunction(failing)) return std::nullopt;
    Texts texts = {row.failure};
    const std::string lost = ", another world is current";
    for (const bool right : {false, true}) {
      for (const bool down : {false, true}) {
        if (right && !both && entry == kVertical) continue;
        if (down && !both && entry == kHorizontal) continue;
        const std::string text = shifted(right ? kRight : 0, down ? kDown : 0);
        texts.push_back("true " + text);
        if (both && locks) texts.push_back("false " + text);
        if (!locks) texts.push_back("true " + text + lost);
      }
    }
    return texts;
  };
  row.sources = 0;
  return row;
}

}  // namespace

std::vector<Case> ScrollCases() {
  return {
      WrapsAlong(kVertical, false),
      WrapsMaskAlong(kVertical, false),
      Shifts(kVertical, false),
      WrapsAlong(kHorizontal, true),
      WrapsMaskAlong(kHorizontal, true),
      Shifts(kHorizontal, true),
      WrapsBoth(),
      Shifts(kBoth, false),
  };
}

}  // namespace faults
