// Counting, tables, replacement, rectangle masks, uniformity, search.
#include <cstring>

#include "tests/faults/cases.h"

namespace faults {

namespace {

using host::MemoryBlock;
using BlockRef = host::Ref<MemoryBlock>;

// A method of Picture that is true of a picture painted so, and of one without pixels.
template <class... A>
Case Asks(std::string entry, Rgb (*paint)(int32_t, int32_t), const A&... arguments) {
  Case row{"Picture", std::move(entry)};
  row.run = [=](Scene& scene) { return Text(scene.Call<bool>(scene.Make(paint), arguments...)); };
  row.failure = "false";
  row.empty = "true";
  row.sources = 1;
  return row;
}

// The counters that aren't zero: "[20:4 61:4]", or "nil".
std::string TextOfHistogram(const BlockRef& block) {
  if (!block) return "nil";
  std::string text;
  for (size_t value = 0; value < 256; ++value) {
    uint32_t counter = 0;
    std::memcpy(&counter, &block->Bytes()[value * 4], 4);
    if (counter == 0) continue;
    text += (text.empty() ? "" : " ") + std::to_string(value) + ":" + std::to_string(counter);
  }
  return "[" + text + "]";
}

const char* const kCountColours =
    "CountColorsKRT(byref red as memoryblock, byref blue as memoryblock, byref green as "
    "memoryblock, byref count as integer)";

// Histograms that the call makes itself.
Case CountsIntoNewBlocks() {
  Case row{"Picture", kCountColours, Part::kMethod, "blocks of its own"};
  row.run = [](Scene& scene) {
    REALmemoryBlock blocks[3] = {};
    int32_t count = 77;
    scene.Call(scene.Make(Photo), &blocks[0], &blocks[1], &blocks[2], &count);
    std::string text = Text(count);
    for (const REALmemoryBlock block : blocks) {
      text += " " + TextOfHistogram(host::AdoptHandle<MemoryBlock>(block));
    }
    return text;
  };
  row.failure = "-1 [] [] []";
  row.empty = "0 [] [] []";
  row.also = [](std::string_view failing) -> Texts {
    if (failing != "newMemoryBlock") return {};
    return {"-1 nil [] []", "-1 [] nil []", "-1 [] [] nil", "-1 nil nil nil"};
  };
  row.sources = 1;
  return row;
}

Case CountsIntoGivenBlocks() {
  Case row = CountsIntoNewBlocks();
  row.label = "given blocks";
  row.run = [](Scene& scene) {
    const BlockRef blocks[3] = {scene.Host().NewMemoryBlock(1024),
                                scene.Host().NewMemoryBlock(1024),
                                scene.Host().NewMemoryBlock(1024)};
    REALmemoryBlock handles[3] = {blocks[0].Handle(), blocks[1].Handle(), blocks[2].Handle()};
    int32_t count = 77;
    scene.Call(scene.Make(Photo), &handles[0], &handles[1], &handles[2], &count);
    std::string text = Text(count);
    for (const BlockRef& block : blocks) text += " " + TextOfHistogram(block);
    return text;
  };
  row.also = {};
  return row;
}

const char* const kTransform =
    "TransformColorsKRT(red as memoryblock, blue as memoryblock, green as memoryblock, dest as "
    "picture = nil) as picture";

// A table that inverts.
BlockRef Inverting(host::Host& host) {
  BlockRef block = host.NewMemoryBlock(256);
  for (size_t i = 0; i < 256; ++i) block->Bytes()[i] = static_cast<uint8_t>(255 - i);
  return block;
}

Rgb Inverted(Rgb colour) { return {255 - colour.red, 255 - colour.green, 255 - colour.blue}; }

// The photo through the tables, but for the channel whose table the host says to have no bytes:
// 0 red, 1 green, 2 blue, and its values stay as they are.
std::string Transformed(int channel = -1) {
  return Painted([=](int32_t x, int32_t y) {
    const Rgb colour = Photo(x, y);
    Rgb result = Inverted(colour);
    if (channel == 0) result.red = colour.red;
    if (channel == 1) result.green = colour.green;
    if (channel == 2) result.blue = colour.blue;
    return result;
  });
}

PictureRef Transform(Scene& scene, const PictureRef& dest) {
  const BlockRef red = Inverting(scene.Host());
  const BlockRef blue = Inverting(scene.Host());
  const BlockRef green = Inverting(scene.Host());
  return scene.Call<PictureRef>(scene.Make(Photo), red, blue, green, dest);
}

Case TransformsIntoNewPicture() {
  Case row{"Picture", kTransform, Part::kMethod, "new picture"};
  row.run = [](Scene& scene) { return Text(Transform(scene, nullptr)); };
  row.failure = "nil";
  row.also = [](std::string_view failing) -> Texts {
    if (failing != "memoryBlockGetSize") return {};
    return {Transformed(), Transformed(0), Transformed(1), Transformed(2)};
  };
  row.sources = row.outputs = 1;
  row.locksBefore = 3;
  return row;
}

// The picture given is written whole, or not touched at all.
Case TransformsIntoGivenPicture() {
  Case row = TransformsIntoNewPicture();
  row.label = "given picture";
  row.run = [](Scene& scene) {
    const PictureRef dest = scene.MakeNative(Greys);
    const PictureRef result = Transform(scene, dest);
    return Text(result) + "; " + Text(dest);
  };
  row.failure = "nil; " + Painted(Greys);
  row.also = [](std::string_view failing) -> Texts {
    if (failing == "memoryBlockGetSize") {
      Texts texts;
      for (int channel = -1; channel < 3; ++channel) {
        texts.push_back(Transformed(channel) + "; " + Transformed(channel));
      }
      return texts;
    }
    if (!OpensPictures(failing)) return {};
    // It can't be opened, so that a new one is made; or the host says that it has no pixels, so
    // that it is handed back as it is.
    return {Transformed() + "; " + Painted(Greys), Painted(Greys) + "; " + Painted(Greys)};
  };
  row.outputs = 0;
  return row;
}

// The search is for a part of the picture, at (2, 1).
Case Finds() {
  Case row{"Picture",
           "FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean"};
  row.run = [](Scene& scene) {
    const PictureRef haystack = scene.Make(Photo);
    const PictureRef needle =
        scene.Make([](int32_t x, int32_t y) { return Photo(x + 2, y + 1); }, 2, 2);
    int32_t x = 77;
    int32_t y = 77;
    const bool found = scene.Call<bool>(haystack, needle, &x, &y);
    return Text(found) + " " + Text(x) + " " + Text(y);
  };
  row.failure = "false 0 0";
  // Memory makes the search faster and is no need of it.
  row.exactly = [](std::string_view failing) -> std::optional<Texts> {
    return failing == "memory" ? std::optional(Texts{"true 2 1"}) : std::nullopt;
  };
  row.sources = 2;
  return row;
}

}  // namespace

std::vector<Case> ColourCases() {
  Case countsOne{"Picture", "CountColorKRT(col as color) as integer"};
  countsOne.run = [](Scene& scene) {
    const Rgb first = Photo(0, 0);
    const int32_t colour = first.red << 16 | first.green << 8 | first.blue;
    return Text(scene.Call<int32_t>(scene.Make(Photo), colour));
  };
  countsOne.failure = "0";
  countsOne.sources = 1;

  Case extracts = MakesPicture(
      "ExtractColorKRT(SearchColor as color, ReplaceWithColor as color, "
      "BackGroundColor as color) as picture",
      0x14C864, 0x010203, 0x040506);
  Case masks = MakesPicture("ExtractColorRectangleMaskKRT as picture");
  Case masksPart = MakesPicture(
      "ExtractColorRectangleMaskKRT(left as integer,top as integer,width as integer,height as "
      "integer) as picture",
      1, 1, 3, 2);
  for (Case* row : {&extracts, &masks, &masksPart}) row->alphaOutput = false;

  return {
      countsOne,
      CountsIntoNewBlocks(),
      CountsIntoGivenBlocks(),
      TransformsIntoNewPicture(),
      TransformsIntoGivenPicture(),
      MakesPicture("ReplaceColorKRT(SearchColor as color, ReplaceWithColor as color) as picture",
                   0x14C864, 0x010203),
      extracts,
      masks,
      masksPart,
      Asks("isWhiteKRT as boolean", White),
      Asks("isWhiteKRT(left as integer,top as integer,width as integer,height as integer) as "
           "boolean",
           White, 1, 1, 3, 2),
      Asks("isBlackKRT as boolean", Black),
      Asks("isBlackKRT(left as integer,top as integer,width as integer,height as integer) as "
           "boolean",
           Black, 1, 1, 3, 2),
      Asks("isGrayKRT(tolerance as integer = 0) as boolean", Greys, 0),
      Asks("isGrayKRT(tolerance as integer, left as integer,top as integer,width as integer,height "
           "as integer) as boolean",
           Greys, 5, 1, 1, 3, 2),
      Finds(),
  };
}

}  // namespace faults
