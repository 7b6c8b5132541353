// Methods that make a picture of one picture, pixel by pixel, beside a rule for one pixel.
#pragma once

#include <functional>
#include <vector>

#include "tests/support/fixture.h"

namespace support {

class PixelRuleTest : public PluginTest {
 protected:
  // A call of the method, and what it makes of one pixel by the test's own reckoning.
  using Operation = std::function<PictureRef(const PictureRef&)>;
  using Rule = std::function<Rgb(Rgb)>;

  struct Size {
    int32_t width;
    int32_t height;
  };
  // One pixel, odd rows, rows that end amid any vector.
  static std::vector<Size> Sizes() { return {{1, 1}, {3, 2}, {2, 5}, {17, 3}, {67, 2}, {131, 1}}; }

  static PictureRef Noise(Size size, const host::PictureLayout& layout, Random& random) {
    PictureRef picture = host::Host::Current().NewPicture(size.width, size.height, layout);
    FillWithNoise(picture, random);
    return picture;
  }

  // One row in which each channel takes every value from 0 to 255, and the three differ.
  static PictureRef EveryValue(const host::PictureLayout& layout) {
    PictureRef picture = host::Host::Current().NewPicture(256, 1, layout);
    for (int32_t x = 0; x < 256; ++x) {
      Put(picture, x, 0, {x, (x * 3 + 85) & 255, 255 - x}, static_cast<uint8_t>(x * 7));
    }
    return picture;
  }

  // The result is a new picture that follows the rule in every byte, and the source is unchanged.
  static void ExpectFollows(const Operation& operation, const Rule& rule,
                            const PictureRef& picture) {
    const std::vector<uint8_t> before = Bytes(picture);
    const PictureRef result = operation(picture);
    EXPECT_TRUE(IsNewPicture(result, picture->Width(), picture->Height(),
                             HasAlpha(picture->Layout()),
                             [&](int32_t x, int32_t y) { return rule(At(picture, x, y)); }));
    EXPECT_EQ(Bytes(picture), before) << "the source was changed";
  }

  // A picture of one colour becomes one of another.
  static void ExpectPixel(const Operation& operation, Rgb from, Rgb to) {
    SCOPED_TRACE(::testing::Message() << "of " << from);
    PictureRef picture = host::Host::Current().NewPicture(2, 1);
    Fill(picture, from);
    ExpectFollows(
        operation, [&](Rgb) { return to; }, picture);
  }

  // Nil, and nothing raised, for no picture, a picture that can't be opened, an output that can't
  // be made, and a host that can't make pictures.
  void ExpectNilOnFailure(const Operation& operation) {
    Start();
    EXPECT_FALSE(operation(PictureRef{}));
    EXPECT_FALSE(operation(RefusedPicture())) << "16 bits per pixel";
    PictureRef picture = Host().NewPicture(3, 3);
    Host().faults.FailCall("newPicture");
    EXPECT_FALSE(operation(picture)) << "the host refused a new picture";
    EXPECT_TRUE(operation(picture)) << "and this time it didn't";
    picture = PictureRef{};

    StartWithoutPlugin();
    Host().faults.Hide("newPicture");
    LoadPluginUnderTest(Host());
    picture = Host().NewPicture(3, 3);
    EXPECT_FALSE(operation(picture)) << "a host without the entry";
    picture = PictureRef{};

    host::Settings old;
    old.version = 2011.03;
    Start(old);
    picture = Host().NewPicture(3, 3, host::PictureLayout::WithAlpha());
    EXPECT_FALSE(operation(picture)) << "alpha on a host too old for it";
  }
};

}  // namespace support
