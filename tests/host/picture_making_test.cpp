// Pictures of every kind come into being, with their properties and masks.

#include "tests/host/picture_fixture.h"

namespace host {
namespace {

TEST_F(PictureTest, FreshPicturesAreOfTheHostsKindAndColour) {
  Ref<Picture> fresh = MakeNew(3, 2);
  EXPECT_EQ(fresh->Layout().storage, Storage::kBitmapContext);
  EXPECT_FALSE(HasAlpha(fresh));
  EXPECT_EQ(fresh->Pixel(2, 1), kWhite);
  EXPECT_EQ(fresh->References(), 1);

  host.settings.freshColour = 0x0A141E;
  host.settings.opaqueLayout = PictureLayout::BitmapContext(3, 4);
  fresh = MakeNew(3, 2);
  EXPECT_EQ(fresh->Pixel(0, 1), kColour);
  EXPECT_EQ(fresh->Layout().alphaInfo, 3u);
  EXPECT_EQ(fresh->RowBytes(), 16u);

  for (const Application application : {Application::kConsole, Application::kWeb}) {
    host.settings.application = application;
    EXPECT_EQ(MakeNew(3, 2)->Layout().storage, Storage::kRowTable);
    EXPECT_FALSE(HasAlpha(MakeNew(3, 2)));
    EXPECT_TRUE(HasAlpha(Construct(3, 2)));
    EXPECT_EQ(Construct(3, 2)->Layout().storage, Storage::kRowTable);
  }
}

TEST_F(PictureTest, ThePicturesConstructorGivesItAnAlphaChannel) {
  const Ref<Picture> picture = Construct(5, 4);
  EXPECT_EQ(picture->Width(), 5);
  EXPECT_EQ(picture->Height(), 4);
  EXPECT_EQ(picture->Layout().alphaInfo, 2u);
  EXPECT_TRUE(HasAlpha(picture));
  EXPECT_EQ(picture->Pixel(4, 3), kWhite);
  EXPECT_EQ(picture->References(), 1);
}

TEST_F(PictureTest, AnInstanceIsEmptyUntilConstructed) {
  const REALobject instance = Find<REALobject(const char*)>("PluginNewInstance")("Picture");
  const Ref<Picture> picture = AdoptHandle<Picture>(reinterpret_cast<REALpicture>(instance));
  EXPECT_EQ(picture->Width(), 0);
  EXPECT_EQ(picture->Row(0), nullptr);
  REALpictureDescription description{};
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(Construct(0, 4)->Width(), 0) << "sizes that can't be leave it empty";
}

TEST_F(PictureTest, SizesThatCannotBeGiveNil) {
  for (const auto& [width, height] : {std::pair{0, 5},
                                      {5, 0},
                                      {-1, 5},
                                      {5, -1},
                                      {0x1000000, 1},
                                      {1, 0x1000000},
                                      {INT32_MAX, INT32_MAX}}) {
    EXPECT_FALSE(MakeNew(width, height)) << width << " x " << height;
    EXPECT_NE(ErrorOf([&, w = width, h = height] { host.NewPicture(w, h); }), "");
  }
  EXPECT_FALSE(MakeNew(5, 5, 16));
  host.settings.maximumPixelBytes = 400;
  EXPECT_TRUE(MakeNew(10, 10));
  EXPECT_FALSE(MakeNew(10, 11));
  EXPECT_FALSE(MakeNew(101, 1));
}

TEST_F(PictureTest, LayoutsThatCannotBeAreErrors) {
  const auto fails = [&](auto change) {
    PictureLayout layout;
    change(layout);
    return ErrorOf([&] { host.NewPicture(2, 2, layout); }) != "";
  };
  EXPECT_TRUE(fails([](PictureLayout& l) { l.alphaInfo = 8; }));
  EXPECT_TRUE(fails([](PictureLayout& l) { l.bitsPerPixel = 0; }));
  EXPECT_TRUE(fails([](PictureLayout& l) { l.bitsPerPixel = 129; }));
  EXPECT_TRUE(fails([](PictureLayout& l) { l.rowPadding = -1; }));
  EXPECT_TRUE(fails([](PictureLayout& l) { l.startOffset = 64; }));
  EXPECT_TRUE(fails([](PictureLayout& l) {
    l.storage = Storage::kRowTable;
    l.bitsPerPixel = 16;
  }));
  EXPECT_TRUE(fails([](PictureLayout& l) {
    l.storage = Storage::kRowTable;
    l.locking = Locking::kBoth;
  }));
  EXPECT_TRUE(fails([](PictureLayout& l) { l.storage = Storage::kVector; }));
  EXPECT_FALSE(fails([](PictureLayout&) {}));
}

TEST_F(PictureTest, PropertiesByName) {
  const Ref<Picture> picture = host.NewPicture(7, 5, PictureLayout::WithAlpha());
  auto* getInt = Find<bool(REALobject, const char*, int32_t*)>("REALGetPropValueInt");
  int32_t value = 0;
  EXPECT_TRUE(getInt(AsObject(picture.Get()), "Width", &value));
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(getInt(AsObject(picture.Get()), "HEIGHT", &value));
  EXPECT_EQ(value, 5);
  value = 77;
  EXPECT_FALSE(getInt(AsObject(picture.Get()), "HasAlphaChannel", &value)) << "not an integer";
  EXPECT_FALSE(getInt(AsObject(picture.Get()), "Colour", &value));
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(HasAlpha(picture));
  auto* setInt = Find<bool(REALobject, const char*, int32_t)>("REALSetPropValueInt");
  EXPECT_FALSE(setInt(AsObject(picture.Get()), "Width", 3));

  PictureLayout without;
  without.hasAlphaChannel = std::nullopt;
  EXPECT_FALSE(HasAlpha(host.NewPicture(2, 2, without)));
}

TEST_F(PictureTest, MasksAreMadeOnlyWhenAsked) {
  auto* getMask = Find<REALpicture(REALpicture, bool)>("REALGetPictureMask");
  const Ref<Picture> picture = host.NewPicture(4, 3);
  EXPECT_EQ(getMask(picture.Handle(), false), nullptr);
  EXPECT_FALSE(picture->Mask());
  const Ref<Picture> made = AdoptHandle<Picture>(getMask(picture.Handle(), true));
  EXPECT_EQ(made->Width(), 4);
  EXPECT_EQ(made->Height(), 3);
  EXPECT_EQ(made->References(), 2);  // one of the picture's
  const Ref<Picture> again = AdoptHandle<Picture>(getMask(picture.Handle(), false));
  EXPECT_EQ(again, made);
  picture->SetMask(nullptr);
  EXPECT_EQ(made->References(), 2);
}

TEST_F(PictureTest, AnAttachmentLivesAsLongAsThePicture) {
  Ref<Picture> picture = host.NewPicture(4, 3);
  EXPECT_EQ(picture->Attachment(), nullptr);
  auto attached = std::make_shared<const int>(7);
  const std::weak_ptr<const int> watched = attached;
  picture->Attach(std::move(attached));
  EXPECT_EQ(picture->Attachment(), watched.lock());
  EXPECT_FALSE(watched.expired());
  picture = nullptr;
  EXPECT_TRUE(watched.expired());
}

TEST_F(PictureTest, PicturesAreBuiltFromBuffers) {
  const uint8_t buffer[] = {0, 10, 20, 30, 0, 1, 2, 3, 99, 99, 99, 99,
                            0, 4,  5,  6,  0, 7, 8, 9, 99, 99, 99, 99};
  auto* build =
      Find<REALpicture(int32_t, int32_t, int32_t, void*, int32_t)>("REALBuildPictureFromBuffer");
  void* bytes = const_cast<uint8_t*>(buffer);
  const Ref<Picture> built = AdoptHandle<Picture>(build(2, 2, 1, bytes, 12));
  EXPECT_EQ(built->Pixel(0, 0), kColour);
  EXPECT_EQ(built->Pixel(1, 1), (Rgba{7, 8, 9, 255}));
  EXPECT_TRUE(built->RenderingIsCurrent());
  EXPECT_EQ(build(2, 2, 2, bytes, 12), nullptr);
  EXPECT_EQ(build(2, 2, 1, nullptr, 12), nullptr);
  EXPECT_EQ(build(2, 2, 1, bytes, 7), nullptr);
  EXPECT_EQ(build(0, 2, 1, bytes, 12), nullptr);
}

TEST_F(PictureTest, VectorPicturesHaveNoPixelsButShow) {
  const Ref<Picture> vector =
      host.NewVectorPicture(2, 1, [](int32_t x, int32_t) -> std::optional<uint32_t> {
        if (x == 0) return std::nullopt;
        return 0x0A141E;
      });
  EXPECT_EQ(vector->Row(0), nullptr);
  EXPECT_EQ(vector->ToRgba(), (std::vector<uint8_t>{0, 0, 0, 0, 10, 20, 30, 255}));
  EXPECT_EQ(vector->Rendering(), vector->ToRgba());
  REALpictureDescription description{};
  EXPECT_FALSE(LockDescription(vector, description));
  EXPECT_FALSE(LockDescription(vector, description, kPictureBitmapContext));
  EXPECT_FALSE(LockDescription(vector, description, kPictureRowTable));
  EXPECT_FALSE(HasAlpha(vector));
}

}  // namespace
}  // namespace host
