// Pictures over pixels that somebody else owns.

#include "tests/host/picture_fixture.h"

namespace host {
namespace {

class ForeignPictureTest : public PictureTest {
 protected:
  // 3 x 2 pixels in rows of 20 bytes.
  ForeignPixels Pixels() {
    ForeignPixels pixels;
    pixels.first = bytes;
    pixels.width = 3;
    pixels.height = 2;
    pixels.rowBytes = 20;
    pixels.owner = owner;
    return pixels;
  }

  alignas(4) uint8_t bytes[40] = {};
  std::shared_ptr<int> owner = std::make_shared<int>();
  PictureLayout rgba = PictureLayout::BitmapContext(kAlphaLast);
};

TEST_F(ForeignPictureTest, BothSeeWhatTheOtherWrites) {
  std::fill_n(bytes, 40, uint8_t{7});
  const Ref<Picture> picture = host.NewPictureOver(Pixels(), rgba);
  EXPECT_EQ(picture->Row(1), bytes + 20);
  EXPECT_EQ(picture->RowBytes(), 20u);
  EXPECT_EQ(picture->Padding(0).size(), 8u);
  EXPECT_EQ(picture->Pixel(2, 1), (Rgba{7, 7, 7, 7})) << "nothing is filled in";

  picture->SetPixel(2, 1, {1, 2, 3, 4});
  EXPECT_EQ(bytes[28], 1);
  EXPECT_EQ(bytes[31], 4);
  EXPECT_EQ(bytes[32], 7) << "what lies between rows is left alone";
  bytes[4] = 99;
  EXPECT_EQ(picture->Pixel(1, 0).red, 99);
}

TEST_F(ForeignPictureTest, ItsRenderingIsNeverKept) {
  const Ref<Picture> picture = host.NewPictureOver(Pixels(), rgba);
  EXPECT_EQ(picture->Rendering()[0], 0);
  bytes[0] = 50;
  bytes[3] = 255;
  EXPECT_EQ(picture->Rendering()[0], 50);
  EXPECT_TRUE(picture->RenderingIsCurrent());
}

TEST_F(ForeignPictureTest, NorIsThatOfAPictureWhosePixelsAreShared) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  picture->Row(0)[1] = 50;
  EXPECT_EQ(picture->Rendering()[0], 255) << "a fresh rendering, kept";
  picture->SharePixels();
  EXPECT_EQ(picture->Rendering()[0], 50);
  picture->Row(0)[1] = 60;
  EXPECT_EQ(picture->Rendering()[0], 60);
  EXPECT_TRUE(picture->RenderingIsCurrent());
}

TEST_F(ForeignPictureTest, LinesAreDrawnOverWhatSomebodyElseWrote) {
  const Ref<Graphics> graphics = host.NewGraphics(host.NewPictureOver(Pixels(), rgba));
  graphics->foreColour = 0x0A141E;
  graphics->DrawLine(0, 0, 2, 0);
  EXPECT_EQ(bytes[4], 10);
  bytes[4] = 99;
  graphics->DrawLine(0, 0, 2, 0);
  EXPECT_EQ(bytes[4], 10);
}

TEST_F(ForeignPictureTest, TheOwnerStaysAsLongAsAReferenceDoes) {
  Ref<Picture> picture = host.NewPictureOver(Pixels(), rgba);
  const Ref<Picture> other = picture;
  picture = nullptr;
  EXPECT_EQ(owner.use_count(), 2);
}

TEST_F(ForeignPictureTest, TheOwnerIsLetGoWithTheLastReference) {
  { const Ref<Picture> picture = host.NewPictureOver(Pixels(), rgba); }
  EXPECT_EQ(owner.use_count(), 1);
}

TEST_F(ForeignPictureTest, ADescriptionGivesThePixelsThemselves) {
  const Ref<Picture> picture = host.NewPictureOver(Pixels(), rgba);
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(Find<void*(void*)>("CGBitmapContextGetData")(description.pictureData), bytes);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetBytesPerRow")(description.pictureData), 20u);
  UnlockDescription(picture);
}

TEST_F(ForeignPictureTest, PixelsThatCannotBeAreRefused) {
  const auto refused = [&](auto spoil) {
    ForeignPixels pixels = Pixels();
    PictureLayout layout = rgba;
    spoil(pixels, layout);
    return ErrorOf([&] { host.NewPictureOver(pixels, layout); });
  };
  EXPECT_EQ(refused([](ForeignPixels&, PictureLayout&) {}), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.width = 0; }), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.height = -1; }), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.first = nullptr; }), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.first += 2; }), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.rowBytes = 8; }), "");
  EXPECT_NE(refused([](ForeignPixels& pixels, PictureLayout&) { pixels.rowBytes = 13; }), "");
  EXPECT_NE(refused([](ForeignPixels&, PictureLayout& layout) { layout.bitsPerPixel = 24; }), "");
  EXPECT_NE(
      refused([](ForeignPixels&, PictureLayout& layout) { layout.storage = Storage::kRowTable; }),
      "");
  EXPECT_EQ(owner.use_count(), 1);
}

}  // namespace
}  // namespace host
