// Where pixels lie, what they read as, and what the host shows of them.

#include <cstring>

#include "tests/host/picture_fixture.h"

namespace host {
namespace {

// Where the bytes of a 32-bit pixel of the colour (10, 20, 30) and alpha 255 lie, by layout.
const struct {
  PictureLayout layout;
  std::vector<uint8_t> bytes;
} kLayouts[] = {
    {PictureLayout::BitmapContext(0), {10, 20, 30, 255}},
    {PictureLayout::BitmapContext(1), {10, 20, 30, 255}},
    {PictureLayout::BitmapContext(2), {255, 10, 20, 30}},
    {PictureLayout::BitmapContext(3), {10, 20, 30, 255}},
    {PictureLayout::BitmapContext(4), {255, 10, 20, 30}},
    {PictureLayout::BitmapContext(5), {10, 20, 30, 255}},
    {PictureLayout::BitmapContext(6), {255, 10, 20, 30}},
    {PictureLayout::RowTable(), {30, 20, 10, 0}},
    {PictureLayout::GraphicsWorld(), {255, 10, 20, 30}},
};

TEST_F(PictureTest, LayoutsPutTheirBytesWhereTheyBelong) {
  for (const auto& [layout, bytes] : kLayouts) {
    SCOPED_TRACE(testing::Message()
                 << static_cast<int>(layout.storage) << " alpha info " << layout.alphaInfo);
    const Ref<Picture> picture = host.NewPicture(2, 2, layout);
    picture->SetPixel(1, 1, kColour);
    const uint8_t* pixel = picture->Row(1) + 4;
    EXPECT_EQ(std::vector<uint8_t>(pixel, pixel + 4), bytes);
    EXPECT_EQ(picture->Word(1, 1),
              bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<uint32_t>(bytes[3]) << 24);
    EXPECT_EQ(picture->Pixel(1, 1), kColour);
    EXPECT_EQ(picture->Pixel(0, 0), kWhite);
    picture->SetWord(0, 1, picture->Word(1, 1));
    EXPECT_EQ(picture->Pixel(0, 1), kColour);
  }
}

TEST_F(PictureTest, AlphaIsKeptWhereTheLayoutHasIt) {
  const Rgba clear = {1, 2, 3, 100};
  for (const uint32_t info : {1u, 2u, 3u, 4u}) {
    const Ref<Picture> picture = host.NewPicture(1, 1, PictureLayout::WithAlpha(info));
    picture->SetPixel(0, 0, clear);
    EXPECT_EQ(picture->Pixel(0, 0), clear) << info;
  }
  for (const uint32_t info : {0u, 5u, 6u}) {
    const Ref<Picture> picture = host.NewPicture(1, 1, PictureLayout::BitmapContext(info));
    picture->SetPixel(0, 0, clear);
    EXPECT_EQ(picture->Pixel(0, 0), (Rgba{1, 2, 3, 255})) << info;
  }
  const Ref<Picture> alphaOnly = host.NewPicture(1, 1, PictureLayout::BitmapContext(7));
  alphaOnly->SetPixel(0, 0, clear);
  EXPECT_EQ(alphaOnly->Pixel(0, 0), (Rgba{0, 0, 0, 100}));
}

TEST_F(PictureTest, OtherDepthsHaveTheirPixels) {
  const struct {
    int32_t bits;
    Rgba read;
  } kCases[] = {
      {8, {18, 18, 18, 255}},  // (10 * 299 + 20 * 587 + 30 * 114 + 500) / 1000
      {16, {8, 16, 24, 255}},  // five bits: 1, 2, 3
      {24, {10, 20, 30, 255}},
  };
  for (const auto& c : kCases) {
    const Ref<Picture> picture = host.NewPicture(3, 2, PictureLayout::BitmapContext(0, 0, c.bits));
    EXPECT_EQ(picture->RowBytes(), static_cast<size_t>(3 * c.bits / 8));
    EXPECT_EQ(picture->Pixel(2, 1), kWhite);
    picture->SetPixel(1, 1, kColour);
    EXPECT_EQ(picture->Pixel(1, 1), c.read);
    EXPECT_EQ(picture->Pixel(2, 1), kWhite);
    EXPECT_NE(ErrorOf([&] { (void)picture->Word(0, 0); }), "");
  }
  const Ref<Picture> wide = host.NewPicture(3, 2, PictureLayout::BitmapContext(0, 0, 64));
  EXPECT_EQ(wide->RowBytes(), 24u);
  EXPECT_NE(ErrorOf([&] { (void)wide->Pixel(0, 0); }), "");
  EXPECT_EQ(host.NewPicture(9, 1, PictureLayout::BitmapContext(0, 0, 1))->RowBytes(), 2u);
}

TEST_F(PictureTest, RowsOfATableStandBackwardsUnlessToldOtherwise) {
  const Ref<Picture> backwards = host.NewPicture(3, 4, PictureLayout::RowTable(8));
  EXPECT_EQ(backwards->Row(0) - backwards->Row(1), 3 * 4 + 8);
  PictureLayout layout = PictureLayout::RowTable(8);
  layout.contiguousRows = true;
  const Ref<Picture> forwards = host.NewPicture(3, 4, layout);
  EXPECT_EQ(forwards->Row(1) - forwards->Row(0), 3 * 4 + 8);
}

TEST_F(PictureTest, PaddingAndStartAreAsAsked) {
  PictureLayout layout = PictureLayout::BitmapContext(1, 12);
  layout.startOffset = 20;
  const Ref<Picture> picture = host.NewPicture(3, 2, layout);
  EXPECT_EQ(picture->RowBytes(), 24u);
  EXPECT_EQ(picture->Row(1) - picture->Row(0), 24);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(picture->Row(0)) % 64, 20u);
  ASSERT_EQ(picture->Padding(1).size(), 12u);
  EXPECT_EQ(picture->Padding(1).data(), picture->Row(1) + 12);
  for (const uint8_t byte : picture->Padding(1)) EXPECT_EQ(byte, Picture::kPaddingByte);
  picture->Fill(kColour);
  for (const uint8_t byte : picture->Padding(0)) EXPECT_EQ(byte, Picture::kPaddingByte);
}

TEST_F(PictureTest, PixelsOutsideAreErrors) {
  const Ref<Picture> picture = host.NewPicture(3, 2);
  EXPECT_TRUE(Contains(ErrorOf([&] { (void)picture->Pixel(3, 0); }), "(3, 0) is outside"));
  EXPECT_NE(ErrorOf([&] { picture->SetPixel(0, -1, kWhite); }), "");
  EXPECT_NE(ErrorOf([&] { picture->Row(2); }), "");
}

TEST_F(PictureTest, RgbaGoesThroughEveryLayout) {
  std::vector<uint8_t> opaque;
  for (int i = 0; i < 3 * 2; ++i) {
    for (const int channel : {i * 40, 255 - i, i * 7, 255}) {
      opaque.push_back(static_cast<uint8_t>(channel));
    }
  }
  for (const auto& [layout, bytes] : kLayouts) {
    const Ref<Picture> picture = host.NewPicture(3, 2, layout);
    picture->FromRgba(opaque);
    EXPECT_EQ(picture->ToRgba(), opaque) << layout.alphaInfo;
  }
  EXPECT_NE(ErrorOf([&] { host.NewPicture(3, 3)->FromRgba(opaque); }), "");
}

TEST_F(PictureTest, RgbaIsMultipliedAndDivided) {
  const Ref<Picture> picture = host.NewPicture(3, 1, PictureLayout::WithAlpha(1));
  picture->FromRgba(std::vector<uint8_t>{200, 100, 1, 128, 9, 9, 9, 0, 7, 8, 9, 255});
  // (200 * 128 + 127) / 255 = 100, (100 * 128 + 127) / 255 = 50, (128 + 127) / 255 = 1
  EXPECT_EQ(picture->Pixel(0, 0), (Rgba{100, 50, 1, 128}));
  EXPECT_EQ(picture->Pixel(1, 0), (Rgba{0, 0, 0, 0}));
  EXPECT_EQ(picture->Pixel(2, 0), (Rgba{7, 8, 9, 255}));
  // (100 * 255 + 64) / 128 = 199, (50 * 255 + 64) / 128 = 100, (255 + 64) / 128 = 2
  EXPECT_EQ(picture->ToRgba(), (std::vector<uint8_t>{199, 100, 2, 128, 0, 0, 0, 0, 7, 8, 9, 255}));
}

TEST_F(PictureTest, TheRenderingStaysUntilTheCacheIsCleared) {
  const Ref<Picture> picture = MakeNew(2, 1);
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  void* data = Find<void*(void*)>("CGBitmapContextGetData")(description.pictureData);
  std::memset(data, 0, 8);
  UnlockDescription(picture);

  const std::vector<uint8_t> white(8, 255);
  const std::vector<uint8_t> black = {0, 0, 0, 255, 0, 0, 0, 255};
  EXPECT_FALSE(picture->RenderingIsCurrent());
  EXPECT_EQ(picture->Rendering(), white);
  EXPECT_EQ(picture->ToRgba(), black);
  auto* clear = Find<void(REALpicture)>("REALPictureClearCache");
  clear(picture.Handle());
  EXPECT_TRUE(picture->RenderingIsCurrent());
  EXPECT_EQ(picture->Rendering(), black);

  std::memset(data, 255, 8);
  EXPECT_EQ(picture->Rendering(), black) << "kept since it was last shown";
  EXPECT_FALSE(picture->RenderingIsCurrent());
  clear(picture.Handle());
  EXPECT_EQ(picture->Rendering(), white);

  picture->SetPixel(1, 0, kColour);
  EXPECT_TRUE(picture->RenderingIsCurrent()) << "the host's own doing";
}

}  // namespace
}  // namespace host
