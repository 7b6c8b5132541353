#include <algorithm>
#include <cstdlib>
#include <random>
#include <utility>

#include "tests/host/host_test.h"

namespace host {
namespace {

// A drawing as text: one letter a pixel, '.' for white.
std::string Text(const Ref<Picture>& picture) {
  std::string text;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      text += picture->Pixel(x, y) == Rgba{255, 255, 255, 255} ? '.' : '#';
    }
    text += '\n';
  }
  return text;
}

// The line point by point, as Bresenham's counter walks, and the pen at each.
std::string PlainLine(int32_t width, int32_t height, int32_t x1, int32_t y1, int32_t x2, int32_t y2,
                      int32_t penWidth, int32_t penHeight) {
  std::string text;
  for (int32_t y = 0; y < height; ++y) text += std::string(static_cast<size_t>(width), '.') + '\n';
  const int dx = std::abs(x2 - x1), dy = std::abs(y2 - y1);
  const int longer = std::max(dx, dy), shorter = std::min(dx, dy);
  const int stepX = x2 < x1 ? -1 : 1, stepY = y2 < y1 ? -1 : 1;
  int x = x1, y = y1, counter = 0;
  for (int i = 0; i <= longer; ++i) {
    for (int v = y; v < y + penHeight; ++v) {
      for (int u = x; u < x + penWidth; ++u) {
        if (u >= 0 && v >= 0 && u < width && v < height) {
          text[static_cast<size_t>(v * (width + 1) + u)] = '#';
        }
      }
    }
    (dx >= dy ? x : y) += dx >= dy ? stepX : stepY;
    counter += 2 * shorter;
    if (counter >= longer && longer > 0) {
      (dx >= dy ? y : x) += dx >= dy ? stepY : stepX;
      counter -= 2 * longer;
    }
  }
  return text;
}

class LineTest : public HostTest {
 protected:
  std::string Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t penWidth = 1,
                   int32_t penHeight = 1) {
    const Ref<Picture> picture = host.NewPicture(9, 7);
    const Ref<Graphics> graphics = host.NewGraphics(picture);
    graphics->penWidth = penWidth;
    graphics->penHeight = penHeight;
    graphics->DrawLine(x1, y1, x2, y2);
    return Text(picture);
  }
};

TEST_F(LineTest, BothEndsAreDrawn) {
  EXPECT_EQ(Line(1, 1, 5, 3),
            ".........\n"
            ".#.......\n"
            "..##.....\n"
            "....##...\n"
            ".........\n"
            ".........\n"
            ".........\n");
  EXPECT_EQ(Line(2, 2, 2, 2),
            ".........\n"
            ".........\n"
            "..#......\n"
            ".........\n"
            ".........\n"
            ".........\n"
            ".........\n");
}

TEST_F(LineTest, ThePenHangsBelowAndToTheRight) {
  EXPECT_EQ(Line(1, 1, 3, 1, 3, 2),
            ".........\n"
            ".#####...\n"
            ".#####...\n"
            ".........\n"
            ".........\n"
            ".........\n"
            ".........\n");
  EXPECT_EQ(Line(-1, -1, -1, -1, 3, 2),
            "##.......\n"
            ".........\n"
            ".........\n"
            ".........\n"
            ".........\n"
            ".........\n"
            ".........\n");
}

TEST_F(LineTest, APenWithoutSizeDrawsNothing) {
  const std::string blank = Line(100, 100, 100, 100);
  EXPECT_EQ(Line(1, 1, 5, 5, 0, 1), blank);
  EXPECT_EQ(Line(1, 1, 5, 5, 1, 0), blank);
  EXPECT_EQ(Line(1, 1, 5, 5, -3, 4), blank);
}

TEST_F(LineTest, EqualsTheLineWalkedPointByPoint) {
  const unsigned seed = 20131;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_int_distribution<int32_t> place(-14, 20);
  std::uniform_int_distribution<int32_t> pen(1, 6);
  for (int i = 0; i < 4000; ++i) {
    const int32_t x1 = place(random), y1 = place(random), x2 = place(random), y2 = place(random);
    const int32_t width = pen(random), height = pen(random);
    ASSERT_EQ(Line(x1, y1, x2, y2, width, height), PlainLine(9, 7, x1, y1, x2, y2, width, height))
        << x1 << ", " << y1 << " to " << x2 << ", " << y2 << ", pen " << width << " x " << height;
  }
}

// What a line needn't paint because the one before did must be known anew after anything else.
TEST_F(LineTest, ManyLinesAmongOtherChanges) {
  const unsigned seed = 20132;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_int_distribution<int32_t> place(-5, 12);
  std::uniform_int_distribution<int32_t> pen(1, 5);
  std::uniform_int_distribution<int> change(0, 9);
  const Ref<Picture> picture = host.NewPicture(9, 7);
  const Ref<Graphics> one = host.NewGraphics(picture), other = host.NewGraphics(picture);
  const Ref<Picture> white = host.NewPicture(9, 7);
  std::string expected = Text(picture);
  for (int i = 0; i < 2000; ++i) {
    const Ref<Graphics>& graphics = i % 3 == 0 ? one : other;
    graphics->penWidth = pen(random);
    graphics->penHeight = pen(random);
    const int32_t x1 = place(random), y1 = place(random), x2 = place(random), y2 = place(random);
    graphics->DrawLine(x1, y1, x2, y2);
    const std::string line =
        PlainLine(9, 7, x1, y1, x2, y2, graphics->penWidth, graphics->penHeight);
    for (size_t at = 0; at < line.size(); ++at) {
      if (line[at] == '#') expected[at] = '#';
    }
    ASSERT_EQ(Text(picture), expected) << i;
    const int what = change(random);
    if (what > 4) continue;
    if (what == 0) picture->SetPixel(2, 3, {255, 255, 255, 255});
    if (what == 1) std::fill_n(picture->Row(3) + 8, 4, uint8_t{255});
    if (what == 2) one->DrawPicture(*white, {2, 3, 1, 1}, {0, 0, 1, 1});
    if (what == 3) {  // the plug-in's way: through a description
      REALpictureDescription description{};
      const auto lock = reinterpret_cast<uint8_t (*)(REALpicture, REALpictureDescription*)>(
          host.Resolver()("lockPictureDescription"));
      const auto unlock =
          reinterpret_cast<void (*)(REALpicture)>(host.Resolver()("unlockPictureDescription"));
      ASSERT_NE(lock(picture.Handle(), &description), 0);
      std::fill_n(const_cast<uint8_t*>(std::as_const(*picture).Row(3)) + 8, 4, uint8_t{255});
      unlock(picture.Handle());
    }
    if (what == 4) {
      graphics->foreColour = 0xFFFFFF;
      graphics->penWidth = graphics->penHeight = 1;
      graphics->DrawLine(2, 3, 2, 3);
      graphics->foreColour = 0;
    }
    expected[3 * 10 + 2] = '.';
  }
}

TEST_F(LineTest, TheFarthestEndsAndTheLargestPensAreDrawnAtOnce) {
  const std::string diagonal =
      "#........\n"
      ".#.......\n"
      "..#......\n"
      "...#.....\n"
      "....#....\n"
      ".....#...\n"
      "......#..\n";
  EXPECT_EQ(Line(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX), diagonal);
  EXPECT_EQ(Line(INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN), diagonal);
  const std::string full = std::string("#########\n#########\n#########\n#########\n#########\n") +
                           "#########\n#########\n";
  EXPECT_EQ(Line(0, 0, 0, 0, INT32_MAX, INT32_MAX), full);
  EXPECT_EQ(Line(INT32_MIN, 0, INT32_MAX, 0, 1, INT32_MAX), full);
  // The one step to the right lies half-way, which is between the rows -1 and 0.
  EXPECT_EQ(Line(0, INT32_MIN, 1, INT32_MAX).substr(0, 10), ".#.......\n");
  EXPECT_EQ(Line(0, INT32_MIN, 1, INT32_MAX - 4).substr(0, 10), ".#.......\n");
  EXPECT_EQ(Line(0, INT32_MIN + 4, 1, INT32_MAX).substr(0, 30),
            "#........\n#........\n.#.......\n");
}

TEST_F(LineTest, ThroughTheHostsFunctions) {
  const Ref<Picture> picture = host.NewPicture(4, 3, PictureLayout::RowTable());
  (void)picture->Rendering();
  const REALgraphics graphics =
      Find<REALgraphics(REALpicture)>("pluginPictureGraphicsGetter")(picture.Handle());
  ASSERT_NE(graphics, nullptr);
  const REALobject object = AsObject(graphics);
  EXPECT_TRUE(Find<bool(REALobject, const char*, uint32_t)>("REALSetPropValueUInt32")(
      object, "ForeColor", 0xFF0A141E));
  auto* setInt = Find<bool(REALobject, const char*, int32_t)>("REALSetPropValueInt");
  EXPECT_TRUE(setInt(object, "PenWidth", 2));
  EXPECT_TRUE(setInt(object, "PenHeight", 1));
  EXPECT_FALSE(setInt(object, "PenDepth", 1));
  int32_t value = 0;
  EXPECT_TRUE(Find<bool(REALobject, const char*, int32_t*)>("REALGetPropValueInt")(
      object, "PenWidth", &value));
  EXPECT_EQ(value, 2);
  Find<void(REALgraphics, int32_t, int32_t, int32_t, int32_t)>("RuntimeGraphicsDrawLine")(
      graphics, 1, 1, 1, 1);
  EXPECT_EQ(Text(picture), "....\n.##.\n....\n");
  EXPECT_EQ(picture->Pixel(1, 1), (Rgba{10, 20, 30, 255}));
  EXPECT_TRUE(picture->RenderingIsCurrent());
  Unlock(graphics);
  EXPECT_EQ(picture->References(), 1);
}

TEST_F(LineTest, EmptyAndVectorPicturesHaveNoGraphics) {
  auto* getter = Find<REALgraphics(REALpicture)>("pluginPictureGraphicsGetter");
  const Ref<Picture> vector = host.NewVectorPicture(2, 2, [](int32_t, int32_t) { return 0u; });
  EXPECT_EQ(getter(vector.Handle()), nullptr);
  EXPECT_NE(ErrorOf([&] { host.NewGraphics(vector); }), "");
}

class DrawPictureTest : public HostTest {
 protected:
  // Numbers its pixels: red is the column, green the row.
  Ref<Picture> Numbered(int32_t width, int32_t height, const PictureLayout& layout = {}) {
    const Ref<Picture> picture = host.NewPicture(width, height, layout);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        picture->SetPixel(x, y, {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 7, 255});
      }
    }
    return picture;
  }

  void Draw(const Ref<Picture>& target, const Ref<Picture>& image, int32_t x, int32_t y, int32_t w,
            int32_t h, int32_t sx, int32_t sy, int32_t sw, int32_t sh) {
    const Ref<Graphics> graphics = host.NewGraphics(target);
    void* method = Find<void*(REALobject, const char*)>("REALLoadObjectMethod")(
        AsObject(graphics.Get()),
        "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx "
        "as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)");
    ASSERT_NE(method, nullptr);
    reinterpret_cast<void (*)(REALgraphics, REALpicture, int32_t, int32_t, int32_t, int32_t,
                              int32_t, int32_t, int32_t, int32_t)>(method)(
        graphics.Handle(), image.Handle(), x, y, w, h, sx, sy, sw, sh);
  }
};

TEST_F(DrawPictureTest, CopiesBetweenAllKinds) {
  for (const PictureLayout& from :
       {PictureLayout::BitmapContext(1), PictureLayout::BitmapContext(6, 4),
        PictureLayout::RowTable(), PictureLayout::GraphicsWorld()}) {
    for (const PictureLayout& to : {PictureLayout::BitmapContext(5), PictureLayout::WithAlpha(2),
                                    PictureLayout::RowTable()}) {
      const Ref<Picture> target = host.NewPicture(3, 2, to);
      Draw(target, Numbered(3, 2, from), 0, 0, 3, 2, 0, 0, 3, 2);
      EXPECT_EQ(target->ToRgba(), Numbered(3, 2)->ToRgba());
    }
  }
}

TEST_F(DrawPictureTest, PartsAndTheDefaultSize) {
  const Ref<Picture> target = host.NewPicture(5, 4);
  (void)target->Rendering();
  Draw(target, Numbered(6, 6), 3, 1, 2, 2, 4, 2, 2, 2);
  EXPECT_EQ(target->Pixel(3, 1), (Rgba{4, 2, 7, 255}));
  EXPECT_EQ(target->Pixel(4, 2), (Rgba{5, 3, 7, 255}));
  EXPECT_EQ(target->Pixel(2, 1), (Rgba{255, 255, 255, 255}));
  EXPECT_EQ(target->Pixel(4, 3), (Rgba{255, 255, 255, 255}));
  EXPECT_TRUE(target->RenderingIsCurrent());

  const Ref<Picture> whole = host.NewPicture(3, 2);
  Draw(whole, Numbered(3, 2), 0, 0, 3, 2, 0, 0, -10000, -10000);
  EXPECT_EQ(whole->ToRgba(), Numbered(3, 2)->ToRgba());
}

TEST_F(DrawPictureTest, WhatIsOutsideEitherIsLeftOut) {
  const Ref<Picture> target = host.NewPicture(3, 2);
  Draw(target, Numbered(3, 2), -1, -1, 3, 2, 0, 0, 3, 2);
  EXPECT_EQ(target->Pixel(0, 0), (Rgba{1, 1, 7, 255}));
  EXPECT_EQ(target->Pixel(2, 0), (Rgba{255, 255, 255, 255}));
  const Ref<Picture> other = host.NewPicture(3, 2);
  Draw(other, Numbered(3, 2), 0, 0, 3, 2, 2, 1, 3, 2);
  EXPECT_EQ(other->Pixel(0, 0), (Rgba{2, 1, 7, 255}));
  EXPECT_EQ(other->Pixel(1, 0), (Rgba{255, 255, 255, 255}));
  const std::vector<uint8_t> before = other->ToRgba();
  Draw(other, Numbered(3, 2), INT32_MAX, INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN, 0, 3, 2);
  Draw(other, Numbered(3, 2), 0, 0, 0, 2, 0, 0, 3, 2);
  EXPECT_EQ(other->ToRgba(), before);
}

TEST_F(DrawPictureTest, AVectorPictureLeavesItsClearPlaces) {
  const Ref<Picture> vector =
      host.NewVectorPicture(2, 2, [](int32_t x, int32_t y) -> std::optional<uint32_t> {
        if (x != y) return std::nullopt;
        return 0x0A141E;
      });
  const Ref<Picture> target = Numbered(2, 2);
  Draw(target, vector, 0, 0, 2, 2, 0, 0, 2, 2);
  EXPECT_EQ(target->Pixel(0, 0), (Rgba{10, 20, 30, 255}));
  EXPECT_EQ(target->Pixel(1, 0), (Rgba{1, 0, 7, 255}));
  EXPECT_EQ(target->Pixel(1, 1), (Rgba{10, 20, 30, 255}));
}

TEST_F(DrawPictureTest, AlphaAndMasksBlend) {
  const Ref<Picture> image = host.NewPicture(1, 1, PictureLayout::WithAlpha(1));
  image->FromRgba(std::vector<uint8_t>{255, 0, 0, 51});
  const Ref<Picture> target = host.NewPicture(1, 1);
  target->Fill({0, 0, 255, 255});
  Draw(target, image, 0, 0, 1, 1, 0, 0, 1, 1);
  EXPECT_EQ(target->Pixel(0, 0), (Rgba{51, 0, 204, 255}));  // a fifth red over four fifths blue

  const Ref<Picture> masked = host.NewPicture(1, 1);
  masked->Fill({255, 0, 0, 255});
  const Ref<Picture> mask = host.NewPicture(1, 1);
  mask->Fill({204, 204, 204, 255});  // white is clear
  masked->SetMask(mask);
  target->Fill({0, 0, 255, 255});
  Draw(target, masked, 0, 0, 1, 1, 0, 0, 1, 1);
  EXPECT_EQ(target->Pixel(0, 0), (Rgba{51, 0, 204, 255}));
}

TEST_F(DrawPictureTest, OtherSizesTakeTheNearestPixel) {
  const Ref<Picture> target = host.NewPicture(4, 4);
  Draw(target, Numbered(2, 2), 0, 0, 4, 4, 0, 0, 2, 2);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 4; ++x) {
      EXPECT_EQ(target->Pixel(x, y),
                (Rgba{static_cast<uint8_t>(x / 2), static_cast<uint8_t>(y / 2), 7, 255}));
    }
  }
}

}  // namespace
}  // namespace host
