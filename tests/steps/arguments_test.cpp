// No argument makes a call longer than its picture warrants.
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <vector>

#include "tests/steps/counting_test.h"

namespace {

using support::PictureRef;

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Rectangle {
  int32_t left, top, width, height;
};
constexpr Rectangle kRectangles[] = {
    {0, 0, kMost, kMost},           {kLeast, kLeast, kMost, kMost},
    {kLeast, kLeast, -1, -1},       {kLeast, kLeast, kLeast, kLeast},
    {kMost, kMost, kMost, kMost},   {kMost, 0, kLeast, kMost},
    {-kMost, -kMost, kMost, kMost}, {0, kLeast, -1, kMost},
    {1, 1, kMost, kMost},
};

class Arguments : public steps::CountingTest {
 protected:
  static constexpr int32_t kSide = 200;

  PictureRef Grey() {
    const PictureRef picture = Host().NewPicture(kSide, kSide);
    support::Fill(picture, {255, 255, 255});
    return picture;
  }
  PictureRef Noise() {
    support::Random random;
    const PictureRef picture = Host().NewPicture(kSide, kSide);
    support::FillWithNoise(picture, random);
    return picture;
  }

  // Some arguments have more to do: not-a-number takes another way, and so does a curve without
  // smoothing. A call that goes through all of its arguments takes a thousand times as long or
  // more. `ordinary` is counted once for all calls with the same name.
  void ExpectNoLonger(const std::function<void()>& extreme, const std::function<void()>& ordinary,
                      const std::string& name, const std::string& arguments) {
    int64_t& usual = usually[name];
    if (usual == 0) usual = Count(ordinary);
    EXPECT_LE(Count(extreme), 4 * usual)
        << name << " " << arguments << ", which takes " << usual << " instructions otherwise";
  }

 private:
  std::map<std::string, int64_t> usually;
};

TEST_F(Arguments, Rectangles) {
  const PictureRef noise = Noise();
  const PictureRef white = Grey();
  for (const Rectangle& r : kRectangles) {
    const std::string what = std::to_string(r.left) + ", " + std::to_string(r.top) + ", " +
                             std::to_string(r.width) + ", " + std::to_string(r.height);
    for (const char* name : {"InvertKRT", "InvertGrayKRT", "ExtractColorRectangleMaskKRT"}) {
      ExpectNoLonger([&] { Call<PictureRef>(name, noise, r.left, r.top, r.width, r.height); },
                     [&] { Call<PictureRef>(name, noise, 0, 0, kSide, kSide); }, name, what);
    }
    for (const char* name : {"isWhiteKRT", "isBlackKRT"}) {
      ExpectNoLonger([&] { Call<bool>(name, white, r.left, r.top, r.width, r.height); },
                     [&] { Call<bool>("isWhiteKRT", white, 0, 0, kSide, kSide); }, name, what);
    }
    for (const int32_t tolerance : {0, kMost, kLeast}) {
      ExpectNoLonger(
          [&] { Call<bool>("isGrayKRT", white, tolerance, r.left, r.top, r.width, r.height); },
          [&] { Call<bool>("isGrayKRT", white, 1, 0, 0, kSide, kSide); }, "isGrayKRT", what);
    }
  }
}

TEST_F(Arguments, Deltas) {
  const PictureRef picture = Noise();
  for (const int32_t delta : {kLeast, kLeast + 1, kMost, kMost - 1, kSide * 10'000'000}) {
    for (const char* name : {"ScrollVerticalKRT", "ScrollHorizontalKRT"}) {
      ExpectNoLonger([&] { Call<bool>(name, picture, delta, true, false); },
                     [&] { Call<bool>(name, picture, kSide / 3, true, false); }, name,
                     std::to_string(delta));
    }
    ExpectNoLonger([&] { Call<bool>("ScrollKRT", picture, delta, delta, true, false); },
                   [&] { Call<bool>("ScrollKRT", picture, kSide / 3, kSide / 3, true, false); },
                   "ScrollKRT", std::to_string(delta));
  }
}

TEST_F(Arguments, BoundsOfFilters) {
  const PictureRef picture = Noise();
  for (const char* name : {"PictureSepiaKRT", "PictureLut3DKRT"}) {
    const host::Ref<host::Instance> filter = Host().New(name);
    Host().Set(filter, "SourcePicture", picture);
    const auto run = [&](int32_t minX, int32_t minY, int32_t maxX, int32_t maxY) {
      Host().Set(filter, "MinX", minX);
      Host().Set(filter, "MinY", minY);
      Host().Set(filter, "MaxX", maxX);
      Host().Set(filter, "MaxY", maxY);
      ASSERT_TRUE(Host().Call<bool>(Find(name, "Run", 0), filter));
      Host().Set(filter, "DestinationPicture", host::Nil{});
    };
    for (const int32_t minimum : {kLeast, kLeast + 1, -1, kMost}) {
      for (const int32_t maximum : {kLeast, kLeast + 1, 0, kMost}) {
        ExpectNoLonger([&] { run(minimum, minimum, maximum, maximum); }, [&] { run(0, 0, 0, 0); },
                       name, std::to_string(minimum) + " to " + std::to_string(maximum));
      }
    }
  }
}

TEST_F(Arguments, Numbers) {
  const PictureRef picture = Noise();
  for (const double value : {1e300, -1e300, kInfinity, -kInfinity, kNan, 5e-324}) {
    for (const char* name :
         {"ChangeBrightnessAbsoluteKRT", "ChangeBrightnessLinearKRT", "ChangeContrastKRT"}) {
      ExpectNoLonger([&] { Call<PictureRef>(name, picture, value); },
                     [&] { Call<PictureRef>(name, picture, 0.5); }, name, std::to_string(value));
    }
    for (const char* name : {"ChangeContrastBrightnessAbsoluteKRT",
                             "ChangeContrastBrightnessLinearKRT", "ChangeCustomKRT"}) {
      ExpectNoLonger([&] { Call<PictureRef>(name, picture, value, value); },
                     [&] { Call<PictureRef>(name, picture, 0.5, 0.5); }, name,
                     std::to_string(value));
    }
  }
  for (const int32_t value : {kLeast, kMost}) {
    ExpectNoLonger([&] { Call<PictureRef>("ChangeSaturationKRT", picture, value); },
                   [&] { Call<PictureRef>("ChangeSaturationKRT", picture, 10); },
                   "ChangeSaturationKRT", std::to_string(value));
    ExpectNoLonger([&] { Call<double>("ColornessKRT", picture, value); },
                   [&] { Call<double>("ColornessKRT", picture, 10); }, "ColornessKRT",
                   std::to_string(value));
  }
}

class SampleArguments : public Arguments {
 protected:
  using Block = host::Ref<host::MemoryBlock>;

  PictureRef Render(const Block& samples, int32_t count, int32_t smooth, int32_t width,
                    int32_t height, int32_t outline, int32_t bits) {
    return CallGlobal<PictureRef>("RenderSamplesKRT", samples, count, smooth, width, height,
                                  outline, 0x88B5C4, 0x274C5A, 0x203F4E, bits, false);
  }
  Block Samples(const std::function<float(size_t)>& sample) {
    constexpr size_t kCount = 4000;
    std::vector<float> values(kCount);
    for (size_t i = 0; i < kCount; ++i) values[i] = sample(i);
    const auto* bytes = reinterpret_cast<const uint8_t*>(values.data());
    return Host().NewMemoryBlock(std::span(bytes, kCount * sizeof(float)));
  }
};

TEST_F(SampleArguments, CountsSmoothingAndSizes) {
  const Block samples = Samples([](size_t i) { return static_cast<float>(i % 20) / 20 - 0.5F; });
  const auto ordinary = [&] { Render(samples, 4000, 3, kSide, kSide, 1, -32); };
  for (const int32_t smooth : {kLeast, kLeast + 1, -2, -1, 0, kMost - 1, kMost}) {
    ExpectNoLonger([&] { Render(samples, 4000, smooth, kSide, kSide, 1, -32); }, ordinary,
                   "RenderSamplesKRT", "smooth " + std::to_string(smooth));
  }
  for (const int32_t count : {kLeast, 0, 4001, kMost}) {
    ExpectNoLonger([&] { Render(samples, count, 3, kSide, kSide, 1, -32); }, ordinary,
                   "RenderSamplesKRT", "sample count " + std::to_string(count));
  }
  for (const int32_t size : {32768, kMost}) {
    ExpectNoLonger([&] { EXPECT_FALSE(Render(samples, 4000, 3, size, kSide, 1, -32)); }, ordinary,
                   "RenderSamplesKRT", "width " + std::to_string(size));
    ExpectNoLonger([&] { EXPECT_FALSE(Render(samples, 4000, 3, kSide, size, 1, -32)); }, ordinary,
                   "RenderSamplesKRT", "height " + std::to_string(size));
  }
  for (const int32_t bits : {kLeast, -8, 0, 24, kMost}) {
    ExpectNoLonger([&] { EXPECT_FALSE(Render(samples, 4000, 3, kSide, kSide, 1, bits)); }, ordinary,
                   "RenderSamplesKRT", "bits " + std::to_string(bits));
  }
}

// Lines from one end of all numbers to the other, of which few pixels are in the picture. A line
// that is steep touches two pixels in each row, and the next column's line the same.
TEST_F(SampleArguments, SamplesFarOutsideThePicture) {
  constexpr int64_t kInstructionsPerPixel = 500;
  for (const float far : {60.0F, 1e6F, 1e30F, std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN()}) {
    const Block wild = Samples([far](size_t i) { return i / 10 % 2 == 0 ? far : -far; });
    for (const int32_t outline : {0, 1}) {
      EXPECT_LE(Count([&] { Render(wild, 4000, 1, kSide, kSide, outline, -32); }),
                kInstructionsPerPixel * kSide * kSide)
          << "samples of " << far << ", outline " << outline;
    }
  }
}

// Point by point these lines would be two thousand million points.
TEST_F(SampleArguments, RowsFarOutsideThePicture) {
  constexpr int32_t kWidth = 32767;
  constexpr int64_t kInstructionsPerColumn = 2000;
  std::vector<float> values;
  for (int32_t i = 0; i < kWidth; ++i) values.push_back(i % 2 == 0 ? 15000.0F : -15000.0F);
  const Block samples = Host().NewMemoryBlock(
      std::span(reinterpret_cast<const uint8_t*>(values.data()), values.size() * sizeof(float)));
  EXPECT_LE(Count([&] { EXPECT_TRUE(Render(samples, kWidth, 1, kWidth, 1, 1, -32)); }),
            kInstructionsPerColumn * kWidth);
}

// Two lines for each column, however thick they are.
TEST_F(SampleArguments, WidthsOfOutlines) {
  const Block samples = Samples([](size_t i) { return static_cast<float>(i % 20) / 20 - 0.5F; });
  for (const int32_t outline : {2, 1000, kMost}) {
    const int64_t before = Host().faults.Calls("RuntimeGraphicsDrawLine");
    EXPECT_TRUE(Render(samples, 4000, 1, kSide, 40, outline, -32));
    EXPECT_EQ(Host().faults.Calls("RuntimeGraphicsDrawLine") - before, 2 * kSide)
        << "outline " << outline;
  }
}

}  // namespace
