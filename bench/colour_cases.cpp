// Counting colours, channel tables, replacing and extracting, uniformity.
#include <array>
#include <cstdlib>
#include <cstring>

#include "bench/contents.h"
#include "bench/parameters.h"
#include "bench/value_case.h"

namespace bench {

namespace {

constexpr Goal kCountGoal{1.15, 1.15, 6};
constexpr Goal kHistogramGoal{6, 6, 2.5};
constexpr Goal kTablesGoal{2.6, 1.3, 1.0};
constexpr Goal kReplaceGoal{1.15, 1.15, 5.5};
constexpr Goal kUniformityGoal{1.25, 1.25, 5.5};

constexpr Rgb OfColour(uint32_t colour) {
  return {static_cast<int>(colour >> 16 & 255), static_cast<int>(colour >> 8 & 255),
          static_cast<int>(colour & 255)};
}

constexpr bool Same(Rgb a, Rgb b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

// A photograph in which the colour that is looked for turns up now and then.
constexpr Rgb Sprinkled(int32_t x, int32_t y) {
  return (x + 3 * y) % 97 == 0 ? OfColour(kSearchColour) : Photo(x, y);
}

using Prepare = std::function<Work(Stage&, Size)>;

Case Make(std::string name, Limit limit, Goal goal, Prepare prepare, bool hasPeers = true) {
  Case made;
  made.name = std::move(name);
  made.limit = limit;
  made.goal = goal;
  made.prepare = std::move(prepare);
  if (hasPeers) made.peers = made.name;
  return made;
}

Work CountColour(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Sprinkled);
  const auto call = stage.Bind<int32_t>("Picture", "CountColorKRT", picture, kSearchColour);
  return ValueWork<int32_t>(size, {picture}, call, [=] {
    return static_cast<int32_t>(
        CountPixels(picture, [](Rgb c) { return Same(c, OfColour(kSearchColour)); }));
  });
}

// Red, green and blue, in the order in which the method takes their blocks.
using Counts = std::array<std::array<uint32_t, 256>, 3>;

Counts CountChannels(const Picture& picture) {
  Counts counts{};
  CountPixels(picture, [&](Rgb c) {
    ++counts[0][static_cast<size_t>(c.red)];
    ++counts[1][static_cast<size_t>(c.green)];
    ++counts[2][static_cast<size_t>(c.blue)];
    return false;
  });
  return counts;
}

// Where the method's results go.
struct HistogramVariables {
  std::array<host::Ref<host::MemoryBlock>, 3> blocks;
  std::array<REALmemoryBlock, 3> handles{};
  int32_t count = 0;
};

auto Histograms(Rgb (*content)(int32_t, int32_t)) {
  return [content](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, content);
    const auto variables = std::make_shared<HistogramVariables>();
    for (size_t i = 0; i < 3; ++i) {
      variables->blocks[i] = stage.Host().NewMemoryBlock(1024);
      variables->handles[i] = variables->blocks[i].Handle();
    }
    const auto call =
        stage.Bind<void>("Picture", "CountColorsKRT", picture, &variables->handles[0],
                         &variables->handles[1], &variables->handles[2], &variables->count);
    Work work;
    work.sources = {picture};
    work.area = AreaOf(work.sources, nullptr, WholeOf(size));
    work.pixels = size.Pixels();
    work.call = [call, variables] { call(); };
    work.check = [=]() -> std::string {
      for (const auto& block : variables->blocks) {
        std::fill(block->Bytes().begin(), block->Bytes().end(), uint8_t{0});
      }
      call();
      if (variables->count != size.Pixels())
        return "the count is " + std::to_string(variables->count);
      const Counts expected = CountChannels(picture);
      for (size_t i = 0; i < 3; ++i) {
        if (std::memcmp(variables->blocks[i]->Bytes().data(), expected[i].data(), 1024) != 0) {
          return "histogram " + std::to_string(i) + " differs";
        }
      }
      return {};
    };
    return work;
  };
}

Rgb ThroughTables(Rgb c) {
  return {TableEntry(0, c.red), TableEntry(1, c.green), TableEntry(2, c.blue)};
}

auto Tables(bool intoPicture) {
  return [intoPicture](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, Photo);
    std::array<host::Ref<host::MemoryBlock>, 3> blocks;
    for (int channel = 0; channel < 3; ++channel) {
      auto& block = blocks[static_cast<size_t>(channel)];
      block = stage.Host().NewMemoryBlock(256);
      for (int value = 0; value < 256; ++value) {
        block->Bytes()[static_cast<size_t>(value)] = TableEntry(channel, value);
      }
    }
    // Red, blue, green.
    const Picture into = intoPicture ? stage.Target(size) : Picture();
    const auto call = stage.Bind<Picture>("Picture", "TransformColorsKRT", picture, blocks[0],
                                          blocks[2], blocks[1], into);
    return MapWork<1>(stage, size, {picture}, WholeOf(size), call, ThroughTables);
  };
}

Work Replace(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Sprinkled);
  const auto call =
      stage.Bind<Picture>("Picture", "ReplaceColorKRT", picture, kSearchColour, kReplacement);
  return MapWork<1>(stage, size, {picture}, WholeOf(size), call, [](Rgb c) {
    return Same(c, OfColour(kSearchColour)) ? OfColour(kReplacement) : c;
  });
}

Work Extract(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Sprinkled);
  const auto call = stage.Bind<Picture>("Picture", "ExtractColorKRT", picture, kSearchColour,
                                        kReplacement, kBackground);
  return MapWork<1>(stage, size, {picture}, WholeOf(size), call, [](Rgb c) {
    return OfColour(Same(c, OfColour(kSearchColour)) ? kReplacement : kBackground);
  });
}

// A picture that passes, so that all of it has to be looked at, and then one that doesn't.
template <class Passes, class... A>
auto Uniformity(std::string method, Rgb (*content)(int32_t, int32_t), Passes passes,
                A... arguments) {
  return [=](Stage& stage, Size size) {
    const Picture picture = stage.Paint(size, content);
    const auto call = stage.Bind<bool>("Picture", method, picture, arguments...);
    Work work = ValueWork<bool>(size, {picture}, call,
                                [=] { return CountPixels(picture, passes) == size.Pixels(); });
    work.check = [=, whole = work.check] {
      uint8_t* last = picture->Row(size.height - 1) + picture->RowBytes() - 4;
      const std::array<uint8_t, 4> kept{last[0], last[1], last[2], last[3]};
      last[1] ^= 64;
      std::string wrong = whole();
      std::copy(kept.begin(), kept.end(), last);
      return wrong.empty() ? whole() : wrong;
    };
    return work;
  };
}

bool IsGrey(Rgb c) { return c.red == c.green && c.green == c.blue; }

constexpr Rgb AlmostGrey(int32_t x, int32_t y) {
  const int value = 20 + Photo(x, y).green * 200 / 255;
  return {value, value + kGreyTolerance / 2, value + kGreyTolerance};
}

bool IsAlmostGrey(Rgb c) {
  return std::abs(c.red - c.green) <= kGreyTolerance &&
         std::abs(c.green - c.blue) <= kGreyTolerance && std::abs(c.blue - c.red) <= kGreyTolerance;
}

}  // namespace

std::vector<Case> ColourCases() {
  return {
      Make("CountColorKRT", Limit::read, kCountGoal, CountColour),
      Make("CountColorsKRT", Limit::read, kHistogramGoal, Histograms(Photo)),
      Make("CountColorsKRT white page", Limit::read, kHistogramGoal, Histograms(White), false),
      Make("TransformColorsKRT", Limit::copy, kTablesGoal, Tables(false)),
      Make("TransformColorsKRT into a picture", Limit::copy, kTablesGoal, Tables(true), false),
      Make("ReplaceColorKRT", Limit::copy, kReplaceGoal, Replace),
      Make("ExtractColorKRT", Limit::copy, kReplaceGoal, Extract),
      Make("isBlackKRT", Limit::read, kUniformityGoal,
           Uniformity("isBlackKRT", Black,
                      [](Rgb c) { return c.red == 0 && c.green == 0 && c.blue == 0; })),
      Make("isWhiteKRT", Limit::read, kUniformityGoal,
           Uniformity("isWhiteKRT", White,
                      [](Rgb c) { return c.red == 255 && c.green == 255 && c.blue == 255; })),
      Make("isGrayKRT", Limit::read, kUniformityGoal,
           Uniformity("isGrayKRT", Grey, IsGrey, int32_t{0})),
      Make("isGrayKRT tolerance", Limit::read, kUniformityGoal,
           Uniformity("isGrayKRT", AlmostGrey, IsAlmostGrey, kGreyTolerance), true),
  };
}

}  // namespace bench
