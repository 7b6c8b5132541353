#include <cstring>

#include "tests/host/host_test.h"

namespace host {
namespace {

class PictureTest : public HostTest {
 protected:
  Ref<Picture> MakeNew(int32_t width, int32_t height, int32_t depth = 32) {
    return AdoptHandle<Picture>(
        Find<REALpicture(int32_t, int32_t, int32_t)>("newPicture")(width, height, depth));
  }

  Ref<Picture> Construct(int32_t width, int32_t height) {
    const REALobject instance = Find<REALobject(const char*)>("PluginNewInstance")("Picture");
    void* method = Find<void*(REALobject, const char*)>("REALLoadObjectMethod")(
        instance, "Constructor(width as integer, height as integer)");
    reinterpret_cast<void (*)(REALobject, int32_t, int32_t)>(method)(instance, width, height);
    return AdoptHandle<Picture>(reinterpret_cast<REALpicture>(instance));
  }

  bool HasAlpha(const Ref<Picture>& picture) {
    uint8_t value = 77;
    const bool found = Find<bool(REALobject, const char*, uint8_t*)>("REALGetPropValueBool")(
        AsObject(picture.Get()), "HasAlphaChannel", &value);
    EXPECT_EQ(found, value != 77);
    return found && value != 0;
  }
};

constexpr Rgba kWhite = {255, 255, 255, 255};
constexpr Rgba kColour = {10, 20, 30, 255};

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

class LockTest : public PictureTest {
 protected:
  // What the three locks give: without a wish, 8 and 10; 0 where refused.
  std::vector<int32_t> Given(const Ref<Picture>& picture) {
    std::vector<int32_t> given;
    for (const uint32_t wanted : {0u, 8u, 10u}) {
      REALpictureDescription description{};
      const bool locked = wanted == 0 ? LockDescription(picture, description)
                                      : LockDescription(picture, description, wanted);
      given.push_back(locked ? description.pictureType : 0);
      if (locked) UnlockDescription(picture);
    }
    EXPECT_EQ(picture->DescriptionLocks(), 0);
    return given;
  }
};

TEST_F(LockTest, EachKindGivesItsOwnType) {
  using Types = std::vector<int32_t>;
  EXPECT_EQ(Given(host.NewPicture(2, 2)), (Types{8, 8, 0}));
  EXPECT_EQ(Given(host.NewPicture(2, 2, PictureLayout::RowTable())), (Types{10, 0, 10}));
  EXPECT_EQ(Given(host.NewPicture(2, 2, PictureLayout::GraphicsWorld())), (Types{4, 0, 0}));
  const Ref<Picture> picture = host.NewPicture(2, 2);
  picture->SetLocking(Locking::kBoth);
  EXPECT_EQ(Given(picture), (Types{8, 8, 10}));
  picture->SetLocking(Locking::kRowTable);
  EXPECT_EQ(Given(picture), (Types{10, 0, 10}));
  picture->SetLocking(Locking::kRefused);
  EXPECT_EQ(Given(picture), (Types{0, 0, 0}));
}

TEST_F(LockTest, ABitmapContextAnswersWhatItIs) {
  const Ref<Picture> picture = host.NewPicture(7, 5, PictureLayout::BitmapContext(5, 12, 32));
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(description.width, 7);
  EXPECT_EQ(description.height, 5);
  EXPECT_EQ(description.depth, 32);
  EXPECT_FALSE(description.transparent);
  void* context = description.pictureData;
  EXPECT_EQ(Find<void*(void*)>("CGBitmapContextGetData")(context), picture->Row(0));
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetBitsPerPixel")(context), 32u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(context), 7u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetHeight")(context), 5u);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetBytesPerRow")(context), 40u);
  EXPECT_EQ(Find<uint32_t(void*)>("CGBitmapContextGetAlphaInfo")(context), 5u);
  UnlockDescription(picture);
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(context), 0u);
  EXPECT_TRUE(Contains(TakeErrors(), "CGBitmapContextGetWidth: the picture's description isn't"));
  EXPECT_EQ(Find<size_t(void*)>("CGBitmapContextGetWidth")(nullptr), 0u);
  EXPECT_TRUE(Contains(TakeErrors(), "the context isn't that of a live picture"));
}

TEST_F(LockTest, ARowTableHasItsRows) {
  const Ref<Picture> picture = host.NewPicture(7, 5, PictureLayout::RowTable(4));
  REALpictureDescription description{};
  ASSERT_TRUE(LockDescription(picture, description, kPictureRowTable));
  const auto* table = static_cast<const REALrowTablePicture*>(description.pictureData);
  EXPECT_EQ(table->zero, 0u);
  EXPECT_NE(table->second, nullptr);
  EXPECT_EQ(table->width, 7);
  EXPECT_EQ(table->height, 5);
  for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(table->rows[y], picture->Row(y));
  UnlockDescription(picture);
}

TEST_F(LockTest, OldHostsCountARefusedLock) {
  const Ref<Picture> picture = host.NewPicture(2, 2, PictureLayout::RowTable());
  REALpictureDescription description{};
  host.settings.version = 2012.0;
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 0);
  host.settings.version = 2011.99;
  EXPECT_FALSE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(picture->DescriptionLocks(), 1);
  UnlockDescription(picture);
  EXPECT_EQ(picture->DescriptionLocks(), 0);
}

TEST_F(LockTest, AHookMaySpoilTheDescription) {
  const Ref<Picture> picture = host.NewPicture(2, 2);
  picture->SetDescriptionHook([](REALpictureDescription& description) {
    description.pictureData = nullptr;
    description.pictureType = 3;
  });
  REALpictureDescription description{};
  EXPECT_TRUE(LockDescription(picture, description, kPictureBitmapContext));
  EXPECT_EQ(description.pictureType, 3);
  EXPECT_EQ(description.pictureData, nullptr);
  UnlockDescription(picture);
}

}  // namespace
}  // namespace host
