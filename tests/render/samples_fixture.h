// What the tests of RenderSamplesKRT share: calls, compared byte by byte with the waveform drawn
// here.
#pragma once

#include <string>

#include "tests/render/waveform.h"
#include "tests/support/fixture.h"

namespace waveform {

inline constexpr int32_t kAllBits[] = {7, 8, 15, 16, -32, -64};

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

inline std::vector<host::Settings> EveryOutput() {
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

}  // namespace waveform
