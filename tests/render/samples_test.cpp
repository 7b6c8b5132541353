#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "tests/render/canvas.h"
#include "tests/support/fixture.h"

namespace {

using namespace support;

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

using Block = std::vector<uint8_t>;

template <class T>
T Load(const std::vector<uint8_t>& block, int64_t index) {
  T value;
  std::memcpy(&value, &block.at(static_cast<size_t>(index) * sizeof(T)), sizeof(T));
  return value;
}

double Sample(const std::vector<uint8_t>& block, int64_t index, int32_t bits) {
  switch (bits) {
    case 7:
      return Load<int8_t>(block, index);
    case 8:
      return Load<uint8_t>(block, index) - 128;
    case 15:
      return Load<int16_t>(block, index);
    case 16:
      return Load<uint16_t>(block, index) - 32768;
    case -32:
      return Load<float>(block, index);
    default:
      return Load<double>(block, index);
  }
}

double FullScale(int32_t bits) {
  if (bits < 0) return 1.0;
  return bits > 8 ? 32767.0 : 127.0;
}

int32_t Truncate(double value) {
  const double whole = std::trunc(value);
  if (whole >= -2147483648.0 && whole <= 2147483647.0) return static_cast<int32_t>(whole);
  return std::numeric_limits<int32_t>::min();
}

struct Waveform {
  int32_t sampleCount = 0, smooth = -2, width = 0, height = 0, outlineWidth = 0;
  uint32_t backColour = 0x88B5C4, foreColour = 0x274C5A, outlineColour = 0x203F4E;
  int32_t bits = 8;
  bool autoScale = false;
};

// The columns' rows, not clamped.
struct CurveRows {
  int32_t middle = 0;
  std::vector<int32_t> lower, upper;
};

CurveRows RowsOf(const std::vector<uint8_t>& block, const Waveform& wave) {
  const size_t columns = static_cast<size_t>(wave.width);
  std::vector<double> lower(columns), upper(columns);
  double peak = 0;
  for (int32_t c = 0; c < wave.width; ++c) {
    const double width = wave.width;
    const auto first = static_cast<int64_t>(std::trunc(c / width * wave.sampleCount));
    const auto last = static_cast<int64_t>(std::trunc((c + 1) / width * wave.sampleCount));
    const int64_t n = last - first;
    if (n <= 0) continue;
    double positive = 0, negative = 0;
    for (int64_t i = first; i < last; ++i) {
      const double value = Sample(block, i, wave.bits);
      if (value >= 0) positive += value;
      if (value < 0) negative += value;
    }
    const double half = static_cast<double>(n) * 0.5;
    lower[static_cast<size_t>(c)] = negative / half;
    upper[static_cast<size_t>(c)] = positive / half;
    peak = std::max({peak, positive / half, -(negative / half)});
  }
  double scale = wave.autoScale ? 2 * peak : FullScale(wave.bits);
  const double alpha = 2.0 / (static_cast<double>(wave.smooth) + 1);
  const double beta = 1.0 - alpha;
  if (wave.smooth != -1 && alpha > 0) {
    for (std::vector<double>* values : {&lower, &upper}) {
      double previous = values->front();
      for (double& value : *values) {
        value = previous * beta + value * alpha;
        previous = value;
      }
    }
    scale = beta * scale + alpha * scale;
  }
  CurveRows rows;
  rows.middle = wave.height / 2;
  for (size_t c = 0; c < columns; ++c) {
    const double down = scale == 0 ? 0 : lower[c] * wave.height / scale;
    const double up = scale == 0 ? 0 : upper[c] * wave.height / scale;
    rows.lower.push_back(Truncate(down + rows.middle));
    rows.upper.push_back(Truncate(up + rows.middle));
  }
  return rows;
}

// Everything but outlines of two pixels and more. Width, height and count are those of the picture:
// none is a default.
Canvas Draw(const std::vector<uint8_t>& block, const Waveform& wave) {
  const CurveRows rows = RowsOf(block, wave);
  Canvas canvas(wave.width, wave.height, Channels(wave.backColour), Channels(wave.outlineColour));
  for (int32_t c = 0; c < wave.width; ++c) {
    for (const int32_t v :
         {rows.lower[static_cast<size_t>(c)], rows.upper[static_cast<size_t>(c)]}) {
      const int32_t from = std::clamp(std::min(rows.middle, v), 0, wave.height - 1);
      const int32_t to = std::clamp(std::max(rows.middle, v), 0, wave.height - 1);
      for (int32_t y = from; y <= to; ++y) canvas.At(c, y) = Channels(wave.foreColour);
    }
  }
  if (wave.outlineWidth != 1) return canvas;
  int32_t x = 0, lower = rows.middle, upper = rows.middle;
  for (int32_t c = 0; c < wave.width; ++c) {
    const size_t column = static_cast<size_t>(c);
    canvas.DrawWuLine(x, lower, c, rows.lower[column]);
    canvas.DrawWuLine(x, upper, c, rows.upper[column]);
    x = c;
    lower = rows.lower[column];
    upper = rows.upper[column];
  }
  return canvas;
}

template <class T>
Block BlockOf(const std::vector<T>& samples) {
  Block block(samples.size() * sizeof(T));
  if (!block.empty()) std::memcpy(block.data(), samples.data(), block.size());
  return block;
}

int32_t BytesOfSample(int32_t bits) { return bits < 0 ? -bits / 8 : (bits + 7) / 8; }

constexpr int32_t kAllBits[] = {7, 8, 15, 16, -32, -64};

class Samples : public PluginTest {
 protected:
  using BlockRef = host::Ref<host::MemoryBlock>;

  PictureRef Render(const BlockRef& block, const Waveform& wave) {
    return CallGlobal<PictureRef>("RenderSamplesKRT", block, wave.sampleCount, wave.smooth,
                                  wave.width, wave.height, wave.outlineWidth, wave.backColour,
                                  wave.foreColour, wave.outlineColour, wave.bits, wave.autoScale);
  }
  PictureRef Render(const Block& bytes, const Waveform& wave) {
    return Render(Host().NewMemoryBlock(bytes), wave);
  }

  // Outlines of two pixels and more are the host's lines on the finished picture.
  static void DrawByHost(const PictureRef& picture, const Block& bytes, const Waveform& wave) {
    const CurveRows rows = RowsOf(bytes, wave);
    const auto graphics = host::Host::Current().NewGraphics(picture);
    graphics->foreColour = wave.outlineColour & 0xFFFFFF;
    graphics->penWidth = wave.outlineWidth;
    graphics->penHeight = wave.outlineWidth;
    const auto up = [h = int64_t{wave.outlineWidth / 2}](int32_t row) {
      return static_cast<int32_t>(row - h);  // wraps
    };
    int32_t x = 0, lower = rows.middle, upper = rows.middle;
    for (int32_t c = 0; c < wave.width; ++c) {
      const size_t column = static_cast<size_t>(c);
      graphics->DrawLine(up(x), up(lower), up(c), up(rows.lower[column]));
      graphics->DrawLine(up(x), up(upper), up(c), up(rows.upper[column]));
      x = c;
      lower = rows.lower[column];
      upper = rows.upper[column];
    }
  }

  // The picture of `wave`, compared byte by byte. `asked` is what the call says where that differs
  // from what is drawn: 0 for a default.
  void ExpectWaveform(const Block& bytes, const Waveform& wave, const Waveform& asked) {
    SCOPED_TRACE(::testing::Message()
                 << bytes.size() << " bytes, count " << wave.sampleCount << ", smooth "
                 << wave.smooth << ", " << wave.width << " x " << wave.height << ", outline "
                 << wave.outlineWidth << ", bits " << wave.bits << ", autoscale " << wave.autoScale
                 << ", seed " << Seed());
    const BlockRef block = Host().NewMemoryBlock(bytes);
    const PictureRef picture = Render(block, asked);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), block->Bytes().begin()))
        << "the samples were changed";
    Canvas canvas = Draw(bytes, wave);
    if (wave.outlineWidth > 1) {
      const PictureRef drawn = Host().NewPicture(wave.width, wave.height);
      for (int32_t y = 0; y < wave.height; ++y) {
        for (int32_t x = 0; x < wave.width; ++x) Put(drawn, x, y, canvas.At(x, y));
      }
      DrawByHost(drawn, bytes, wave);
      for (int32_t y = 0; y < wave.height; ++y) {
        for (int32_t x = 0; x < wave.width; ++x) canvas.At(x, y) = At(drawn, x, y);
      }
    }
    EXPECT_TRUE(IsNewPicture(picture, wave.width, wave.height, false,
                             [&](int32_t x, int32_t y) { return canvas.At(x, y); }));
  }
  void ExpectWaveform(const Block& bytes, const Waveform& wave) {
    ExpectWaveform(bytes, wave, wave);
  }

  // Samples of any format: random bytes for whole numbers, numbers around the full scale for
  // floating point, and now and then one that no picture can show.
  static Block RandomSamples(int32_t bits, int32_t count, Random& random, bool wild) {
    if (bits > 0) {
      Block block(static_cast<size_t>(count) * static_cast<size_t>(BytesOfSample(bits)));
      for (uint8_t& byte : block) byte = random.Byte();
      return block;
    }
    std::vector<double> values;
    for (int32_t i = 0; i < count; ++i) {
      double value = random.Real(-1.2, 1.2);
      if (wild && random.OneIn(20)) {
        const double infinity = std::numeric_limits<double>::infinity();
        const double odd[] = {infinity, -infinity, std::nan(""), 1e10, -1e10, 1e300, -1e300,
                              200.0,    -200.0,    3e6,          -3e6, -0.0,  5e-324};
        value = odd[random.Between(0, 12)];
      }
      values.push_back(value);
    }
    if (bits == -64) return BlockOf(values);
    std::vector<float> floats;
    for (const double value : values) {
      const double limit = std::numeric_limits<float>::max();
      floats.push_back(
          static_cast<float>(std::isfinite(value) ? std::clamp(value, -limit, limit) : value));
    }
    return BlockOf(floats);
  }
};

std::vector<host::Settings> EveryOutput() {
  std::vector<host::Settings> all;
  for (uint32_t alphaInfo = 1; alphaInfo <= 6; ++alphaInfo) {
    host::Settings settings;
    settings.opaqueLayout =
        host::PictureLayout::BitmapContext(alphaInfo, static_cast<int32_t>(alphaInfo % 4 * 3));
    settings.opaqueLayout.startOffset = static_cast<int32_t>(alphaInfo % 3);
    all.push_back(settings);
  }
  for (const auto application : {host::Application::kConsole, host::Application::kWeb}) {
    host::Settings settings;
    settings.application = application;
    settings.consoleLayout = host::PictureLayout::RowTable(5);
    all.push_back(settings);
  }
  return all;
}

TEST_F(Samples, AreDrawnAsDescribedInEveryLayout) {
  Random random(710);
  for (const host::Settings& settings : EveryOutput()) {
    Start(settings);
    for (const int32_t bits : kAllBits) {
      for (const int32_t outline : {-1, 0, 1, 2, 5}) {
        Waveform wave;
        wave.bits = bits;
        wave.outlineWidth = outline;
        wave.width = random.Between(1, 70);
        wave.height = random.Between(1, 40);
        wave.sampleCount = random.Between(1, 500);
        wave.smooth = random.Between(-2, 4);
        wave.autoScale = random.OneIn(2);
        ExpectWaveform(RandomSamples(bits, wave.sampleCount, random, false), wave);
      }
    }
  }
}

TEST_F(Samples, AreDrawnAsDescribedForAnyArguments) {
  Random random(711);
  Start();
  for (int i = 0; i < 150; ++i) {
    Waveform wave;
    wave.bits = kAllBits[random.Between(0, 5)];
    wave.outlineWidth = random.Between(0, 3);
    if (random.OneIn(20)) wave.outlineWidth = random.OneIn(2) ? kMost : kLeast;
    wave.width = random.Between(1, random.OneIn(8) ? 150 : 20);
    wave.height = random.Between(1, random.OneIn(8) ? 150 : 20);
    wave.sampleCount = random.Between(1, random.OneIn(2) ? 30 : 3000);
    wave.smooth = random.Between(-3, 12);
    if (random.OneIn(10)) wave.smooth = random.OneIn(2) ? kMost : kLeast;
    wave.autoScale = random.OneIn(2);
    wave.backColour = random.Bits();
    wave.foreColour = random.Bits();
    wave.outlineColour = random.Bits();
    const int32_t held = wave.sampleCount + random.Between(0, 3);
    ExpectWaveform(RandomSamples(wave.bits, held, random, true), wave);
  }
}

TEST_F(Samples, OfSilenceAreALineInTheMiddle) {
  Start();
  for (const auto& [height, middle] : {std::pair{9, 4}, {8, 4}, {1, 0}}) {
    for (const int32_t outline : {0, 1}) {
      Waveform wave;
      wave.bits = 15;
      wave.width = 6;
      wave.height = height;
      wave.outlineWidth = outline;
      const PictureRef picture = Render(Block(60, 0), wave);
      const Rgb line = outline == 1 ? Rgb{0x20, 0x3F, 0x4E} : Rgb{0x27, 0x4C, 0x5A};
      EXPECT_TRUE(IsNewPicture(picture, 6, height, false, [=, m = middle](int32_t, int32_t y) {
        return y == m ? line : Rgb{0x88, 0xB5, 0xC4};
      }));
    }
  }
}

TEST_F(Samples, OfUnsignedBytesAreSilentAt128AndLoudAboveTheCentreWhenSigned) {
  Start();
  const Block bytes(40, 128);
  Waveform wave;
  wave.width = 4;
  wave.height = 20;
  const auto barsAt = [&](int32_t first, int32_t last) {
    return [=](int32_t, int32_t y) {
      return y >= first && y <= last ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    };
  };
  wave.bits = 8;
  EXPECT_TRUE(IsNewPicture(Render(bytes, wave), 4, 20, false, barsAt(10, 10)));
  wave.bits = 7;  // -128, twice that in full: beyond the top
  EXPECT_TRUE(IsNewPicture(Render(bytes, wave), 4, 20, false, barsAt(0, 10)));
}

// Two samples of 63.5 / 2 in full scale reach a quarter of the height, below the centre.
TEST_F(Samples, ThatArePositiveReachBelowTheCentreByTwiceTheirMean) {
  Start();
  Waveform wave;
  wave.bits = -64;
  wave.width = 2;
  wave.height = 40;
  wave.sampleCount = 4;
  const PictureRef picture = Render(BlockOf<double>({0.25, 0.0, -0.25, 0.125}), wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t y = 0; y < 40; ++y) {
    // 0.25 in two samples: 0.25 of 40 rows. -0.25 and 0.125 in two: -10 and 5 rows.
    EXPECT_EQ(At(picture, 0, y) == bar, y >= 20 && y <= 30) << y;
    EXPECT_EQ(At(picture, 1, y) == bar, y >= 10 && y <= 25) << y;
  }
}

TEST_F(Samples, WithoutAHeightAre500Rows) {
  Start();
  for (const int32_t height : {0, -1, kLeast}) {
    Waveform wave;
    wave.width = 3;
    wave.height = 500;
    wave.sampleCount = 7;
    Waveform asked = wave;
    asked.height = height;
    ExpectWaveform({1, 2, 3, 250, 251, 252, 253}, wave, asked);
  }
}

TEST_F(Samples, WithoutAWidthAreAColumnEach) {
  Start();
  for (const int32_t width : {0, -1, kLeast}) {
    Waveform wave;
    wave.width = 5;
    wave.height = 30;
    wave.sampleCount = 5;
    Waveform asked = wave;
    asked.width = width;
    ExpectWaveform({1, 200, 3, 250, 251, 252, 253}, wave, asked);
  }
}

TEST_F(Samples, WithoutACountAreTheWholeBlock) {
  Random random(712);
  Start();
  for (const int32_t bits : {7, 8, 15, 16}) {
    for (const int32_t count : {0, -1, kLeast}) {
      Waveform wave;
      wave.bits = bits;
      wave.width = 4;
      wave.height = 30;
      wave.sampleCount = 21 / BytesOfSample(bits);
      Waveform asked = wave;
      asked.sampleCount = count;
      const Block bytes = RandomSamples(7, 21, random, false);
      ExpectWaveform(bytes, wave, asked);
      wave.width = wave.sampleCount;
      asked.width = 0;
      ExpectWaveform(bytes, wave, asked);
    }
  }
}

// The number of bits is negative, and so is the count that it is divided by.
TEST_F(Samples, OfFloatingPointWithoutACountAreEmptyColumns) {
  Start();
  const Block loud(80, 0x3F);
  for (const int32_t bits : {-32, -64}) {
    Waveform wave;
    wave.bits = bits;
    wave.width = 4;
    wave.height = 30;
    wave.sampleCount = 1;
    Waveform asked = wave;
    asked.sampleCount = 0;
    const PictureRef picture = Render(loud, asked);
    EXPECT_TRUE(IsNewPicture(picture, 4, 30, false, [](int32_t, int32_t y) {
      return y == 15 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    }));
    asked.width = 0;
    EXPECT_FALSE(Render(loud, asked));
  }
}

TEST_F(Samples, FewerThanColumnsLeaveColumnsEmpty) {
  Start();
  Waveform wave;
  wave.width = 9;
  wave.height = 21;
  wave.sampleCount = 2;
  wave.bits = 7;
  const PictureRef picture = Render(Block{127, 127}, wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t x = 0; x < 9; ++x) {
    // trunc(x / 9 * 2) moves on after columns 4 and 8.
    EXPECT_EQ(At(picture, x, 20) == bar, x == 4 || x == 8) << x;
    EXPECT_EQ(At(picture, x, 10), bar);
    EXPECT_FALSE(At(picture, x, 9) == bar);
  }
}

TEST_F(Samples, ScaledByThemselvesFillHalfTheHeightEachWay) {
  Start();
  Waveform wave;
  wave.bits = 15;
  wave.width = 2;
  wave.height = 41;
  wave.autoScale = true;
  // The loudest column reaches half of 41 rows from the centre, the other a tenth of that.
  const PictureRef picture = Render(BlockOf<int16_t>({300, -30}), wave);
  const Rgb bar{0x27, 0x4C, 0x5A};
  for (int32_t y = 0; y < 41; ++y) {
    EXPECT_EQ(At(picture, 0, y) == bar, y >= 20 && y <= 40) << y;
    EXPECT_EQ(At(picture, 1, y) == bar, y >= 17 && y <= 20) << y;
  }
}

TEST_F(Samples, OfSilenceScaledByThemselvesAreEmptyColumns) {
  Start();
  for (const int32_t bits : kAllBits) {
    Waveform wave;
    wave.bits = bits;
    wave.width = 3;
    wave.height = 10;
    wave.sampleCount = 4;
    wave.autoScale = true;
    Block silence(32, bits == 8 ? 128 : 0);
    if (bits == 16) {
      for (size_t i = 1; i < silence.size(); i += 2) silence[i] = 128;
    }
    EXPECT_TRUE(IsNewPicture(Render(silence, wave), 3, 10, false, [](int32_t, int32_t y) {
      return y == 5 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
    }));
  }
}

TEST_F(Samples, SmoothedByOneOrByLessThanNothingStayAsTheyAre) {
  Random random(713);
  Start();
  Waveform plain;
  plain.width = 50;
  plain.height = 60;
  plain.sampleCount = 700;
  plain.smooth = -2;
  const Block bytes = RandomSamples(8, 700, random, false);
  const std::vector<uint8_t> expected = Bytes(Render(bytes, plain));
  for (const int32_t smooth : {1, -1, -3, kLeast}) {
    Waveform wave = plain;
    wave.smooth = smooth;
    EXPECT_TRUE(Bytes(Render(bytes, wave)) == expected) << smooth;
  }
  Waveform wave = plain;
  wave.smooth = 3;
  EXPECT_FALSE(Bytes(Render(bytes, wave)) == expected);
}

// Columns of 0.5, 0, 0 and 1 become 0.5, 0.25, 0.125 and 0.5625 with 3, which halves; with 0 each
// is twice itself less the one before: 0.5, -0.5, 0.5, 1.5.
TEST_F(Samples, SmoothedTakeHalfOfTheColumnBeforeOrOvershoot) {
  Start();
  Waveform wave;
  wave.bits = -32;
  wave.width = 4;
  wave.height = 80;
  wave.sampleCount = 4;
  const Block bytes = BlockOf<float>({0.25F, 0, 0, 0.5F});
  const Rgb bar{0x27, 0x4C, 0x5A};
  const auto expectEnds = [&](const std::vector<std::pair<int32_t, int32_t>>& ends) {
    const PictureRef picture = Render(bytes, wave);
    for (int32_t x = 0; x < 4; ++x) {
      const auto [first, last] = ends[static_cast<size_t>(x)];
      for (int32_t y = 0; y < 80; ++y) {
        EXPECT_EQ(At(picture, x, y) == bar, y >= first && y <= last) << x << " " << y;
      }
    }
  };
  wave.smooth = 3;
  expectEnds({{40, 79}, {40, 60}, {40, 50}, {40, 79}});
  wave.smooth = 0;
  expectEnds({{40, 79}, {0, 40}, {40, 79}, {40, 79}});
}

// The line falls two rows in one column: the pixels beside it are the background with green and
// blue exchanged, mixed half and half with the outline.
TEST_F(Samples, OutlinesExchangeGreenAndBlueBesideTheLine) {
  Start();
  Waveform wave;
  wave.bits = -64;
  wave.width = 3;
  wave.height = 9;
  wave.sampleCount = 3;
  wave.outlineWidth = 1;
  wave.backColour = 0x0A64C8;
  wave.foreColour = 0x0A64C8;
  wave.outlineColour = 0x102030;
  // Rows 4, 4 and 6.
  const PictureRef picture = Render(BlockOf<double>({0, 0, 2.0 / 18 + 0.001}), wave);
  EXPECT_EQ(At(picture, 0, 4), (Rgb{0x10, 0x20, 0x30}));
  EXPECT_EQ(At(picture, 2, 6), (Rgb{0x10, 0x20, 0x30}));
  // Weights 128 on the left and 127 on the right, of (10, 100, 200) and (16, 32, 48).
  EXPECT_EQ(At(picture, 1, 5), (Rgb{(10 * 128 + 16 * 127) / 255, (200 * 128 + 32 * 127) / 255,
                                    (100 * 128 + 48 * 127) / 255}));
  EXPECT_EQ(At(picture, 2, 5), (Rgb{(10 * 127 + 16 * 128) / 255, (200 * 127 + 32 * 128) / 255,
                                    (100 * 127 + 48 * 128) / 255}));
  EXPECT_EQ(At(picture, 0, 5), (Rgb{0x0A, 0x64, 0xC8}));
}

TEST_F(Samples, OutlineTallPicturesWithLinesOfSixteenBits) {
  Start();
  Waveform wave;
  wave.bits = 7;
  wave.width = 2;
  wave.height = 26300;  // 127 reaches row 65750, which is 214 in 16 bits
  wave.sampleCount = 2;
  wave.outlineWidth = 1;
  for (const Block& bytes : {Block{127, 64}, Block{0x80, 127}}) ExpectWaveform(bytes, wave);
}

TEST_F(Samples, OfUnsupportedBitsAreNil) {
  Start();
  for (const int32_t bits : {24, 32, 0, 1, -1, -7, -8, -16, 9, 64, -31, kLeast, kMost}) {
    for (const int32_t count : {0, 4}) {
      Waveform wave;
      wave.width = 4;
      wave.height = 4;
      wave.bits = bits;
      wave.sampleCount = count;
      EXPECT_FALSE(Render(Block(400, 1), wave)) << bits;
    }
  }
}

TEST_F(Samples, ThatAreNilRaiseAnException) {
  Start();
  Waveform wave;
  wave.width = 4;
  wave.bits = 24;
  EXPECT_FALSE(Render(BlockRef(), wave));
  EXPECT_EQ(TakeException(), "NilObjectException: memoryblock is nil");
}

TEST_F(Samples, MoreThanTheBlockHoldsAreNil) {
  Start();
  for (const int32_t bits : kAllBits) {
    Waveform wave;
    wave.width = 4;
    wave.height = 4;
    wave.bits = bits;
    wave.sampleCount = 8;
    const size_t size = static_cast<size_t>(8 * BytesOfSample(bits));
    EXPECT_TRUE(Render(Block(size, 0), wave)) << bits;
    EXPECT_FALSE(Render(Block(size - 1, 0), wave)) << bits;
    wave.sampleCount = kMost;
    EXPECT_FALSE(Render(Block(size, 0), wave)) << bits;
    wave.sampleCount = 1 << 29;
    EXPECT_FALSE(Render(Block(size, 0), wave)) << bits;
  }
}

TEST_F(Samples, OfABlockOfUnknownSizeAreBelieved) {
  Random random(714);
  Start();
  const Block bytes = RandomSamples(15, 10, random, false);
  const BlockRef block = Host().NewMemoryBlock(bytes);
  block->HideSize();
  Waveform wave;
  wave.width = 5;
  wave.height = 20;
  wave.bits = 15;
  wave.sampleCount = 10;
  Canvas canvas = Draw(bytes, wave);
  const auto expected = [&](int32_t x, int32_t y) { return canvas.At(x, y); };
  EXPECT_TRUE(IsNewPicture(Render(block, wave), 5, 20, false, expected));
  // How many there are can't be said, so there are none.
  wave.sampleCount = 0;
  EXPECT_TRUE(IsNewPicture(Render(block, wave), 5, 20, false, [](int32_t, int32_t y) {
    return y == 10 ? Rgb{0x27, 0x4C, 0x5A} : Rgb{0x88, 0xB5, 0xC4};
  }));
  wave.width = 0;
  EXPECT_FALSE(Render(block, wave));
}

TEST_F(Samples, OnAHostThatCannotTellSizesAreBelieved) {
  StartWithoutPlugin();
  Host().faults.Hide("memoryBlockGetSize");
  LoadPluginUnderTest(Host());
  const Block bytes = {1, 2, 3, 250, 251, 252};
  Waveform wave;
  wave.width = 3;
  wave.height = 20;
  wave.sampleCount = 6;
  ExpectWaveform(bytes, wave);
  wave.sampleCount = 0;
  wave.width = 0;
  EXPECT_FALSE(Render(bytes, wave));
}

TEST_F(Samples, WithoutBytesAreNil) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 20;
  wave.sampleCount = 2;
  BlockRef block = Host().NewMemoryBlock(Block{1, 2});
  block->HidePointer();
  EXPECT_FALSE(Render(block, wave));
  block = nullptr;

  StartWithoutPlugin();
  Host().faults.Hide("memoryBlockGetPtr");
  LoadPluginUnderTest(Host());
  EXPECT_FALSE(Render(Block{1, 2}, wave));
}

TEST_F(Samples, PicturesOfUpTo32767AreDrawnAndLargerOnesAreNil) {
  Start();
  Waveform wave;
  wave.height = 1;
  wave.sampleCount = 4;
  wave.width = 32767;
  EXPECT_TRUE(Render(Block(4, 9), wave));
  for (const int32_t width : {32768, 1 << 28, kMost}) {
    wave.width = width;
    EXPECT_FALSE(Render(Block(4, 9), wave)) << width;
  }
  wave.width = 1;
  wave.height = 32767;
  EXPECT_TRUE(Render(Block(4, 9), wave));
  for (const int32_t height : {32768, kMost}) {
    wave.height = height;
    EXPECT_FALSE(Render(Block(4, 9), wave)) << height;
  }
  // A column for each sample, and too many of them.
  wave.height = 4;
  wave.width = 0;
  wave.sampleCount = 0;
  EXPECT_FALSE(Render(Block(32768, 9), wave));
  EXPECT_TRUE(Render(Block(32767, 9), wave));
}

TEST_F(Samples, WithoutANewPictureAreNil) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 3;
  for (const int32_t outline : {0, 1, 2}) {
    wave.outlineWidth = outline;
    Host().faults.FailCall("newPicture");
    EXPECT_FALSE(Render(Block(9, 9), wave));
    Host().faults.FailCall("REALLockPictureDescription");
    EXPECT_FALSE(Render(Block(9, 9), wave));
  }
}

TEST_F(Samples, ThickOutlinesNeedTheHostsGraphics) {
  Start();
  Waveform wave;
  wave.width = 9;
  wave.height = 9;
  wave.sampleCount = 9;
  Waveform thick = wave;
  thick.outlineWidth = 3;
  const Block bytes = {0, 255, 9, 12, 128, 128, 200, 130, 40};
  const std::vector<uint8_t> plain = Bytes(Render(bytes, wave));
  EXPECT_FALSE(Bytes(Render(bytes, thick)) == plain);
  Host().faults.FailCall("pluginPictureGraphicsGetter");
  EXPECT_TRUE(Bytes(Render(bytes, thick)) == plain);

  StartWithoutPlugin();
  Host().faults.Hide("RuntimeGraphicsDrawLine");
  LoadPluginUnderTest(Host());
  EXPECT_TRUE(Bytes(Render(bytes, thick)) == plain);
}

TEST_F(Samples, OutlinesTakeTheColourOfTheirOwnCall) {
  Start();
  Waveform wave;
  wave.width = 3;
  wave.height = 5;
  wave.outlineWidth = 1;
  for (const uint32_t colour : {0xFF0000U, 0x00FF00U, 0xFF0000FFU}) {
    wave.outlineColour = colour;
    EXPECT_EQ(At(Render(Block(9, 128), wave), 1, 2), Channels(colour));
  }
}

// Rows far outside the picture cost nothing: point by point this would be two thousand million.
TEST_F(Samples, FarOutsideThePictureTakeNoTime) {
  Start();
  Waveform wave;
  wave.bits = -32;
  wave.width = 32767;
  wave.height = 1;
  wave.sampleCount = wave.width;
  wave.outlineWidth = 1;
  std::vector<float> samples;
  for (int32_t i = 0; i < wave.width; ++i) samples.push_back(i % 2 == 0 ? 15000.0F : -15000.0F);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(Render(BlockOf(samples), wave));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

}  // namespace
