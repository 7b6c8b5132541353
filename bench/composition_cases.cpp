// Scrolling, channels of several pictures, masks, pictures as strings.
#include <algorithm>
#include <memory>

#include "bench/contents.h"
#include "bench/parameters.h"
#include "bench/value_case.h"

namespace bench {

namespace {

constexpr Goal kScrollGoal{1.25, 1.25, 2.2};
constexpr Goal kScrollBothGoal{2.5, 2.5, 1.1};  // two scrolls, one after the other
constexpr Goal kMergeGoal{1.1, 1.1, 1.1};
constexpr Goal kCombineGoal{3.3, 3.3, 1.9};
constexpr Goal kChannelGoal{1.1, 1.1, 1.6};
constexpr Goal kMaskGoal{1.15, 1.15, 1.2};
constexpr Goal kStringGoal{1.1, 1.1, 1.05};

constexpr size_t kHeader = 40;

using Prepare = std::function<Work(Stage&, Size)>;

Case Make(std::string name, Limit limit, Goal goal, Prepare prepare) {
  Case made;
  made.name = std::move(name);
  made.limit = limit;
  made.goal = goal;
  made.prepare = std::move(prepare);
  made.peers = made.name;
  return made;
}

using Words = std::vector<uint32_t>;

Words WordsOf(const Picture& picture) {
  Words words;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(picture->Row(y));
    words.insert(words.end(), row, row + picture->Width());
  }
  return words;
}

// What is wrong with `actual`; empty when pixel (x, y) is what was at (x - right, y - down) before.
std::string WrongRotation(const Words& before, const Picture& actual, int32_t right, int32_t down) {
  const int32_t width = actual->Width();
  const int32_t height = actual->Height();
  const Words after = WordsOf(actual);
  for (int32_t y = 0; y < height; ++y) {
    const auto from = static_cast<size_t>((y + height - down) % height * width);
    for (int32_t x = 0; x < width; ++x) {
      const auto column = static_cast<size_t>((x + width - right) % width);
      if (after[static_cast<size_t>(y * width + x)] == before[from + column]) continue;
      return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") is from elsewhere";
    }
  }
  return {};
}

auto Scroll(bool horizontal, bool vertical) {
  return [=](Stage& stage, Size size) {
    const int32_t right = horizontal ? ScrollBy(size.width) : 0;
    const int32_t down = vertical ? ScrollBy(size.height) : 0;
    const Picture picture = stage.Paint(size, Photo);
    const Picture target = stage.Target(size);
    const auto call =
        horizontal && vertical
            ? stage.Bind<bool>("Picture", "ScrollKRT", picture, right, down, true, false)
            : stage.Bind<bool>("Picture", horizontal ? "ScrollHorizontalKRT" : "ScrollVerticalKRT",
                               picture, horizontal ? right : down, true, false);
    Work work;
    work.sources = {picture};
    work.area = AreaOf({picture}, target, WholeOf(size));
    work.pixels = size.Pixels();
    work.call = [call] { call(); };
    work.check = [=]() -> std::string {
      const Words before = WordsOf(picture);
      if (!call()) return "nothing was scrolled";
      return WrongRotation(before, picture, right, down);
    };
    work.targetIsRight = [=] {
      return WrongRotation(WordsOf(picture), target, right, down).empty();
    };
    return work;
  };
}

Work Merge(Stage& stage, Size size) {
  const std::vector<Picture> sources = {stage.Paint(size, Photo), stage.Paint(size, Noise)};
  const auto call = stage.Bind<Picture>("", "MergePictureKRT", sources[0], sources[1]);
  return MapWork<2>(stage, size, sources, WholeOf(size), call, [](Rgb a, Rgb b) {
    return Rgb{std::max(a.red, b.red), std::max(a.green, b.green), std::max(a.blue, b.blue)};
  });
}

// The declared order is red, blue, green.
Work Combine(Stage& stage, Size size) {
  const std::vector<Picture> sources = {stage.Paint(size, Photo), stage.Paint(size, Noise),
                                        stage.Paint(size, Grey)};
  const auto call =
      stage.Bind<Picture>("", "CombinePicturesKRT", sources[0], sources[2], sources[1]);
  return MapWork<3>(stage, size, sources, WholeOf(size), call, [](Rgb red, Rgb green, Rgb blue) {
    return Rgb{red.red, green.green, blue.blue};
  });
}

auto ReplaceChannel(std::string method, int Rgb::*channel) {
  return [=](Stage& stage, Size size) {
    const std::vector<Picture> sources = {stage.Paint(size, Photo), stage.Paint(size, Noise)};
    const auto call = stage.Bind<Picture>("Picture", method, sources[0], sources[1]);
    return MapWork<2>(stage, size, sources, WholeOf(size), call, [channel](Rgb source, Rgb other) {
      source.*channel = other.*channel;
      return source;
    });
  };
}

// A photograph whose fourth bytes differ.
Picture PaintWithAlpha(Stage& stage, Size size) {
  Picture picture = stage.Paint(size, Photo);
  for (int32_t y = 0; y < size.height; ++y) {
    uint8_t* row = picture->Row(y);
    for (int32_t x = 0; x < size.width; ++x) row[4 * x + 3] = static_cast<uint8_t>(x + 2 * y);
  }
  return picture;
}

auto GetMask(bool swap) {
  return [swap](Stage& stage, Size size) {
    const Picture picture = PaintWithAlpha(stage, size);
    const auto call = stage.Bind<Picture>("Picture", "EmbeddedMaskKRT", picture, swap);
    return MapWork<1>(stage, size, {picture}, WholeOf(size), call, [swap](Rgb c) {
      const int grey = swap ? 255 - c.fourth : c.fourth;
      return Rgb{grey, grey, grey};
    });
  };
}

// The mask's red becomes the first byte of each pixel.
Work SetMask(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Photo);
  const Picture mask = stage.Paint(size, Noise);
  const auto call = stage.BindSetter("Picture", "EmbeddedMaskKRT", picture, false, mask);
  const auto before = std::make_shared<Words>(WordsOf(picture));
  const auto isRight = [=] {
    const Words after = WordsOf(picture);
    const Words reds = WordsOf(mask);
    for (size_t i = 0; i < after.size(); ++i) {
      if (after[i] != (((*before)[i] & ~255U) | (reds[i] & 255))) return false;
    }
    return true;
  };
  Work work;
  work.sources = {picture, mask};
  work.area = AreaOf({mask}, picture, WholeOf(size));
  work.pixels = size.Pixels();
  work.call = call;
  work.check = [=]() -> std::string {
    call();
    return isRight() ? "" : "a pixel isn't what it should be";
  };
  work.targetIsRight = isRight;
  return work;
}

void PutBigEndian(std::string& bytes, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

// The string of a picture, with `trailing` bytes behind it.
std::string Serialise(const Picture& picture, size_t trailing) {
  const auto pixels = static_cast<size_t>(picture->Width()) * picture->Height();
  std::string bytes(kHeader + 3 * pixels + trailing, '\0');
  bytes.replace(0, 4, "PPIC");
  PutBigEndian(bytes, 4, static_cast<uint32_t>(bytes.size()));
  PutBigEndian(bytes, 8, static_cast<uint32_t>(picture->Width()));
  PutBigEndian(bytes, 12, static_cast<uint32_t>(picture->Height()));
  PutBigEndian(bytes, 16, 32);
  PutBigEndian(bytes, 20, kHeader);
  size_t at = kHeader;
  CountPixels(picture, [&](Rgb c) {
    bytes[at++] = static_cast<char>(c.red);
    bytes[at++] = static_cast<char>(c.green);
    bytes[at++] = static_cast<char>(c.blue);
    return false;
  });
  return bytes;
}

Work ToString(Stage& stage, Size size) {
  using String = host::Ref<host::String>;
  const Picture picture = stage.Paint(size, Photo);
  const Picture target = stage.Target(size);  // memory for libraries to write three bytes a pixel
  stage.TargetString();
  const auto call = stage.Bind<String>("", "PicturetoBinaryStringKRT", picture);
  const auto expected = std::make_shared<std::string>(Serialise(picture, 0));
  Work work;
  work.sources = {picture};
  work.area = AreaOf({picture}, target, WholeOf(size));
  work.pixels = size.Pixels();
  work.call = [call] { call(); };
  work.check = [=, &stage]() -> std::string {
    stage.SetOutput(Output::fresh);  // the bytes arrive only there
    const String string = call();
    if (!string) return "there is no string";
    return string->Bytes() == *expected ? "" : "the bytes differ";
  };
  work.targetIsRight = [=] {
    return std::equal(expected->begin() + kHeader, expected->end(),
                      reinterpret_cast<const char*>(target->Row(0)));
  };
  return work;
}

Work FromString(Stage& stage, Size size) {
  const Picture picture = stage.Paint(size, Photo);
  // As long as a picture, so that a copy of four bytes a pixel has something to read.
  const auto string =
      stage.Host().NewString(Serialise(picture, static_cast<size_t>(size.Pixels())), 0xFFFF);
  const auto call = stage.Bind<Picture>("", "BinaryStringtoPictureKRT", string);
  Work work = MapWork<1>(stage, size, {picture}, WholeOf(size), call, [](Rgb c) { return c; });
  work.area.sources = {reinterpret_cast<const uint8_t*>(string->Bytes().data()) + kHeader};
  return work;
}

}  // namespace

std::vector<Case> CompositionCases() {
  std::vector<Case> cases = {
      Make("ScrollHorizontalKRT", Limit::moveInPlace, kScrollGoal, Scroll(true, false)),
      Make("ScrollVerticalKRT", Limit::moveInPlace, kScrollGoal, Scroll(false, true)),
      Make("ScrollKRT", Limit::moveInPlace, kScrollBothGoal, Scroll(true, true)),
      Make("MergePictureKRT", Limit::twoReadsAndWrite, kMergeGoal, Merge),
      Make("CombinePicturesKRT", Limit::copy, kCombineGoal, Combine),
      Make("ReplaceRedChannelKRT", Limit::twoReadsAndWrite, kChannelGoal,
           ReplaceChannel("ReplaceRedChannelKRT", &Rgb::red)),
      Make("ReplaceGreenChannelKRT", Limit::twoReadsAndWrite, kChannelGoal,
           ReplaceChannel("ReplaceGreenChannelKRT", &Rgb::green)),
      Make("ReplaceBlueChannelKRT", Limit::twoReadsAndWrite, kChannelGoal,
           ReplaceChannel("ReplaceBlueChannelKRT", &Rgb::blue)),
      Make("EmbeddedMaskKRT", Limit::copy, kMaskGoal, GetMask(false)),
      Make("EmbeddedMaskKRT swapped", Limit::copy, kMaskGoal, GetMask(true)),
      Make("EmbeddedMaskKRT assignment", Limit::copy, kMaskGoal, SetMask),
      Make("PicturetoBinaryStringKRT", Limit::copy, kStringGoal, ToString),
      Make("BinaryStringtoPictureKRT", Limit::copy, kStringGoal, FromString),
  };
  for (Case& made : cases) {
    if (made.name == "PicturetoBinaryStringKRT") made.ownMemory = true;
  }
  return cases;
}

}  // namespace bench
