// Core Foundation's way to QuickDraw, and QuickDraw itself.

#include <cstring>

#include "host/quickdraw.h"
#include "tests/host/host_test.h"

namespace host {
namespace {

constexpr int16_t kSystemDomain = -32767;
constexpr uint32_t kFrameworks = 0x6672616D;

class PlatformTest : public HostTest {
 protected:
  void* Url(const char* name) {
    uint8_t ref[80] = {};
    EXPECT_EQ(Find<int16_t(int16_t, uint32_t, uint8_t, void*)>("FSFindFolder")(kSystemDomain,
                                                                               kFrameworks, 1, ref),
              0);
    void* folder = Find<void*(void*, const void*)>("CFURLCreateFromFSRef")(nullptr, ref);
    void* url = Find<void*(void*, void*, const void*, uint8_t)>(
        "CFURLCreateCopyAppendingPathComponent")(nullptr, folder, name, 0);
    Release(folder);
    return url;
  }
  void Release(void* object) { Find<void(void*)>("CFRelease")(object); }

  void* Bundle(const char* name) {
    void* url = Url(name);
    void* bundle = Find<void*(void*, void*)>("CFBundleCreate")(nullptr, url);
    Release(url);
    return bundle;
  }

  void* Function(void* bundle, const char* name) {
    return Find<void*(void*, const void*)>("CFBundleGetFunctionPointerForName")(bundle, name);
  }

  template <class F>
  F* QuickDraw(const char* name) {
    if (quickDraw == nullptr) {
      quickDraw = Bundle("ApplicationServices.framework");
      EXPECT_EQ(Find<uint8_t(void*)>("CFBundleLoadExecutable")(quickDraw), 1);
    }
    void* found = Function(quickDraw, name);
    EXPECT_NE(found, nullptr) << name;
    return reinterpret_cast<F*>(found);
  }

 private:
  void* quickDraw = nullptr;
};

TEST_F(PlatformTest, OnlyTheFrameworksFolderIsFound) {
  uint8_t ref[80] = {};
  auto* find = Find<int16_t(int16_t, uint32_t, uint8_t, void*)>("FSFindFolder");
  EXPECT_NE(find(0, kFrameworks, 1, ref), 0);
  EXPECT_NE(find(kSystemDomain, 0x70726566, 1, ref), 0);
  EXPECT_EQ(Find<void*(void*, const void*)>("CFURLCreateFromFSRef")(nullptr, ref), nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "isn't one that FSFindFolder found"));
}

TEST_F(PlatformTest, OnlyApplicationServicesIsABundle) {
  EXPECT_EQ(Bundle("Nothing.framework"), nullptr);
  void* bundle = Bundle("ApplicationServices.framework");
  ASSERT_NE(bundle, nullptr);
  EXPECT_EQ(Function(bundle, "NewRgn"), nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "the bundle's code isn't loaded"));
  EXPECT_EQ(Find<uint8_t(void*)>("CFBundleLoadExecutable")(bundle), 1);
  for (const char* name :
       {"UnlockPixels", "ScrollRect", "NewRgn", "DisposeRgn", "GetGWorld", "SetGWorld"}) {
    EXPECT_NE(Function(bundle, name), nullptr) << name;
    host.faults.Hide(name);
    EXPECT_EQ(Function(bundle, name), nullptr) << name;
  }
  EXPECT_EQ(Function(bundle, "LockPixels"), nullptr);
  EXPECT_EQ(Function(bundle, "newPicture"), nullptr);
}

TEST_F(PlatformTest, UrlsAreReleasedAndALoadedBundleStays) {
  const Snapshot before = host.census.Take();
  void* bundle = Bundle("ApplicationServices.framework");
  EXPECT_EQ(host.census.DifferenceText(before),
            "CFBundle #3 (/System/Library/Frameworks/ApplicationServices.framework): 1 reference "
            "not returned\n");
  Find<uint8_t(void*)>("CFBundleLoadExecutable")(bundle);
  EXPECT_EQ(host.census.DifferenceText(before), "");
  void* url = Url("ApplicationServices.framework");
  EXPECT_EQ(Find<void*(void*, void*)>("CFBundleCreate")(nullptr, bundle), nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "isn't of the kind that it takes"));
  Release(url);
  Release(url);
  EXPECT_TRUE(Contains(TakeErrors(), "has ended"));
}

class QuickDrawTest : public PlatformTest {
 protected:
  // A graphics world whose red counts the columns and whose green counts the rows.
  Ref<Picture> World(int32_t width, int32_t height) {
    const Ref<Picture> picture = host.NewPicture(width, height, PictureLayout::GraphicsWorld(8));
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        picture->SetPixel(x, y, {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 7, 255});
      }
    }
    return picture;
  }

  // Scrolls the part of a picture given as top, left, bottom, right, as a plug-in does it.
  void Scroll(const Ref<Picture>& picture, std::vector<int16_t> part, int16_t dh, int16_t dv) {
    REALpictureDescription description{};
    ASSERT_TRUE(LockDescription(picture, description));
    ASSERT_EQ(description.pictureType, kPictureGraphicsWorld);
    void* world = nullptr;
    void* device = nullptr;
    QuickDraw<void(void**, void**)>("GetGWorld")(&world, &device);
    QuickDraw<void(void*, void*)>("SetGWorld")(description.pictureData, nullptr);
    EXPECT_EQ(CurrentGraphicsWorld(), picture.Get());
    EXPECT_FALSE(CurrentDeviceIsScreen());
    void* region = QuickDraw<void*()>("NewRgn")();
    QuickDraw<void(const int16_t*, int16_t, int16_t, void*)>("ScrollRect")(part.data(), dh, dv,
                                                                           region);
    QuickDraw<void(void*)>("DisposeRgn")(region);
    QuickDraw<void(void*, void*)>("SetGWorld")(world, device);
    EXPECT_EQ(CurrentGraphicsWorld(), nullptr);
    EXPECT_TRUE(CurrentDeviceIsScreen());
    UnlockDescription(picture);
  }
};

TEST_F(QuickDrawTest, ScrollingMovesThePartAndErasesTheRest) {
  const int16_t kPart[] = {1, 1, 5, 6};  // of 7 columns and 6 rows
  for (int16_t dh = -7; dh <= 7; ++dh) {
    for (int16_t dv = -6; dv <= 6; ++dv) {
      SCOPED_TRACE(testing::Message() << dh << ", " << dv);
      const Ref<Picture> picture = World(7, 6);
      Scroll(picture, {kPart[0], kPart[1], kPart[2], kPart[3]}, dh, dv);
      for (int32_t y = 0; y < 6; ++y) {
        for (int32_t x = 0; x < 7; ++x) {
          const auto inside = [&](int32_t column, int32_t row) {
            return column >= 1 && column < 6 && row >= 1 && row < 5;
          };
          Rgba expected = {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 7, 255};
          if (inside(x, y)) {
            expected = {255, 255, 255, 255};
            if (inside(x - dh, y - dv)) {
              expected = {static_cast<uint8_t>(x - dh), static_cast<uint8_t>(y - dv), 7, 255};
            }
          }
          ASSERT_EQ(picture->Pixel(x, y), expected) << x << ", " << y;
        }
      }
      EXPECT_TRUE(picture->GuardsIntact());
      EXPECT_EQ(picture->Rendering(), picture->ToRgba());
    }
  }
}

TEST_F(QuickDrawTest, ThePartMayReachBeyondThePicture) {
  const Ref<Picture> picture = World(3, 2);
  Scroll(picture, {-100, -100, 32767, 32767}, 0, 32767);
  EXPECT_EQ(picture->Pixel(2, 1), (Rgba{255, 255, 255, 255}));
  const Ref<Picture> other = World(3, 2);
  Scroll(other, {0, 5, 2, 9}, 1, 1);
  EXPECT_EQ(other->Pixel(2, 1), (Rgba{2, 1, 7, 255}));
}

TEST_F(QuickDrawTest, WhatIsNotAWorldOrARegionIsAnError) {
  int something = 0;
  QuickDraw<void(void*, void*)>("SetGWorld")(&something, nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "SetGWorld: the graphics world isn't"));
  const int16_t part[] = {0, 0, 1, 1};
  auto* scroll = QuickDraw<void(const int16_t*, int16_t, int16_t, void*)>("ScrollRect");
  scroll(part, 1, 1, &something);
  EXPECT_TRUE(Contains(TakeErrors(), "ScrollRect"));
  void* region = QuickDraw<void*()>("NewRgn")();
  Release(region);
  EXPECT_TRUE(Contains(TakeErrors(), "a region isn't a Core Foundation object"));
  const Snapshot before = host.census.Take();
  QuickDraw<void(void*)>("DisposeRgn")(region);
  EXPECT_TRUE(Contains(host.census.DifferenceText(before), "1 reference returned too many"));
}

TEST_F(QuickDrawTest, NilStandsForTheScreensWorldAndNoRegion) {
  const Ref<Picture> picture = World(3, 2);
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description));
  auto* setWorld = QuickDraw<void(void*, void*)>("SetGWorld");
  auto* scroll = QuickDraw<void(const int16_t*, int16_t, int16_t, void*)>("ScrollRect");
  const int16_t whole[] = {0, 0, 2, 3};
  setWorld(description.pictureData, nullptr);
  scroll(whole, 1, 0, nullptr);
  EXPECT_EQ(picture->Pixel(2, 1), (Rgba{1, 1, 7, 255}));
  QuickDraw<void(void*)>("DisposeRgn")(nullptr);
  setWorld(nullptr, nullptr);
  EXPECT_EQ(CurrentGraphicsWorld(), nullptr);
  scroll(whole, 1, 0, nullptr);
  EXPECT_EQ(picture->Pixel(2, 1), (Rgba{1, 1, 7, 255}));
  UnlockDescription(picture);
}

TEST_F(QuickDrawTest, PixelsAreLockedAndUnlocked) {
  const Ref<Picture> picture = World(3, 2);
  EXPECT_EQ(LockPixels(*host.NewPicture(2, 2)), nullptr);
  const Snapshot before = host.census.Take();
  void* pixels = LockPixels(*picture);
  EXPECT_TRUE(Contains(host.census.DifferenceText(before), "1 pixel lock not returned"));
  auto* unlock = QuickDraw<void(void*)>("UnlockPixels");
  unlock(pixels);
  EXPECT_EQ(host.census.DifferenceText(before), "");
  unlock(pixels);
  EXPECT_TRUE(Contains(TakeErrors(), "pixels aren't locked"));
  unlock(nullptr);
  EXPECT_TRUE(Contains(TakeErrors(), "the pixels aren't those of a live picture"));
}

TEST_F(QuickDrawTest, AWorldThatEndsWhileCurrentGivesTheScreenBack) {
  {
    const Ref<Picture> picture = World(3, 2);
    REALpictureDescription description{};
    ASSERT_TRUE(LockDescription(picture, description));
    QuickDraw<void(void*, void*)>("SetGWorld")(description.pictureData, nullptr);
    UnlockDescription(picture);
  }
  EXPECT_TRUE(Contains(TakeErrors(), "ended while its graphics world was current"));
  EXPECT_EQ(CurrentGraphicsWorld(), nullptr);
}

}  // namespace
}  // namespace host
