#include <limits>

#include "tests/render/canvas.h"
#include "tests/support/internals_fixture.h"

namespace {

using namespace support;

class WuLine : public InternalsTest {
 protected:
  static constexpr Rgb kBack{200, 100, 40};
  static constexpr Rgb kOutline{16, 32, 48};

  // Draws the line on a picture of one colour and compares the whole picture.
  void ExpectLine(int32_t width, int32_t height, int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    SCOPED_TRACE(::testing::Message() << "(" << x0 << ", " << y0 << ") to (" << x1 << ", " << y1
                                      << ") on " << width << " x " << height);
    Canvas canvas(width, height, kBack, kOutline);
    canvas.DrawWuLine(x0, y0, x1, y1);

    Writer writer = MakeWriter();
    ASSERT_TRUE(internals->newPictureWriter(writer.get(), width, height, false));
    const PictureRef picture = host::AdoptHandle<host::Picture>(internals->render(writer.get()));
    Fill(picture, kBack);
    ASSERT_TRUE(internals->open(writer.get(), picture.Handle(), false, true));
    const int32_t outline[3] = {kOutline.red, kOutline.green, kOutline.blue};
    internals->drawWuLine(writer.get(), outline, x0, y0, x1, y1);
    writer.reset();
    EXPECT_TRUE(PixelsAre(picture, FreshBytes(width, height, false),
                          [&](int32_t x, int32_t y) { return canvas.At(x, y); }));
  }
};

TEST_F(WuLine, GoesInEveryDirection) {
  StartInternals();
  for (int32_t dy = -7; dy <= 7; ++dy) {
    for (int32_t dx = -7; dx <= 7; ++dx) ExpectLine(17, 17, 8, 8, 8 + dx, 8 + dy);
  }
}

TEST_F(WuLine, IsCutOffAtTheEdges) {
  StartInternals();
  Random random(715);
  for (int i = 0; i < 300; ++i) {
    const int32_t reach = random.OneIn(3) ? 1000 : 30;
    const auto coordinate = [&] { return random.Between(-reach, reach); };
    ExpectLine(random.Between(1, 20), random.Between(1, 20), coordinate(), coordinate(),
               coordinate(), coordinate());
  }
}

TEST_F(WuLine, ReachesEveryRowOfATallPicture) {
  StartInternals();
  ExpectLine(3, 2000, 0, 0, 2, 1999);
  ExpectLine(3, 2000, 2, 0, 0, 1999);
  ExpectLine(3, 2000, 2, 1999, 2, 0);
  ExpectLine(3, 2000, 0, -500, 1, 2500);
}

TEST_F(WuLine, TakesAnyCoordinates) {
  StartInternals();
  Random random(716);
  const int32_t least = std::numeric_limits<int32_t>::min();
  const int32_t most = std::numeric_limits<int32_t>::max();
  const int32_t odd[] = {least, least + 1, -65537, -65536, -32769, -32768, -1,       0,
                         1,     5,         32767,  32768,  65535,  65536,  most - 1, most};
  for (int i = 0; i < 200; ++i) {
    const auto coordinate = [&] { return odd[random.Between(0, 15)]; };
    ExpectLine(9, 9, coordinate(), coordinate(), coordinate(), coordinate());
  }
}

}  // namespace
