// CountColorKRT(col as color) as integer
// CountColorsKRT(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock,
//                byref count as integer)
//
// The number of pixels of one exact colour, 0 when the picture can't be opened; and a histogram of
// 256 unsigned 32-bit counters, counter i at byte 4 * i, for each channel, with the number of
// pixels in `count`.
//
// A nil histogram is made, and stays in the caller's variable whatever happens next. The counters
// are added to what the blocks hold, so that several pictures can be counted together. By position
// the blocks take red, green and blue: the one declared `blue` counts green, and the one declared
// `green` counts blue (intended). `count` is -1, and no block is written, when a block can't be
// made, the picture can't be opened, or a block is shorter than 1024 bytes or has no bytes.

#include "pixels/colour_match.h"
#include "pixels/memory_block.h"
#include "pixels/rows.h"

namespace {

constexpr int32_t kValues = 256;
constexpr int32_t kHistogramBytes = kValues * 4;

Rectangle WholeOf(const PictureReader& source) {
  return ClipRectangle(kWholePicture, source.width, source.height);
}

// Neighbours are often alike, and a counter can't be raised again before its last rise is stored:
// four pixels in a row therefore go to lanes of their own.
constexpr int32_t kLanes = 4;

// The caller's counters: red, green, blue, and the same for every lane. Two channels may have the
// same.
struct Histograms {
  Word* channels[3];
  Word* Counters(int32_t /*lane*/, int32_t channel) const { return channels[channel]; }
};

// Counters for each lane. They take as long to clear and to add up as a few thousand pixels to
// count. No two that the same value raises lie a multiple of 4096 bytes apart, which a processor
// takes for the same address when it looks for a store to wait for.
struct LaneHistograms {
  static constexpr int32_t kApart = 16;
  uint32_t lanes[kLanes][3][kValues + kApart];
  uint32_t* Counters(int32_t lane, int32_t channel) { return lanes[lane][channel]; }
};
constexpr uint32_t kFewPixels = 4096;

// Reads each channel by itself, which is less work than to take it out of the pixel's word.
template <Layout kLayout, class Counters>
void CountChannels(const Word* pixel, int32_t lane, Counters& counters) {
  using Bits = LayoutBits<kLayout>;
  const auto* bytes = reinterpret_cast<const uint8_t*>(pixel);
  ++counters.Counters(lane, 0)[bytes[Bits::kRed / 8]];
  ++counters.Counters(lane, 1)[bytes[Bits::kGreen / 8]];
  ++counters.Counters(lane, 2)[bytes[Bits::kBlue / 8]];
}

// Not compiled for wider vectors, which are of no use here and make the loop slower.
template <Layout kLayout, class Counters>
__attribute__((noinline)) void CountPixels(const Word* first, int32_t count, Counters& counters) {
  int32_t x = 0;
  for (; x <= count - kLanes; x += kLanes) {
    for (int32_t lane = 0; lane < kLanes; ++lane) {
      CountChannels<kLayout>(first + x + lane, lane, counters);
    }
  }
  for (; x < count; ++x) CountChannels<kLayout>(first + x, 0, counters);
}

template <class Counters>
void CountPicture(const PictureReader& source, Counters& counters) {
  VisitPixels(source, WholeOf(source), [&]<Layout kLayout>(const Word* first, int32_t count) {
    CountPixels<kLayout>(first, count, counters);
    return true;
  });
}

void CountInLanes(const PictureReader& source, const Histograms& histograms) {
  LaneHistograms lanes{};
  CountPicture(source, lanes);
  for (int32_t channel = 0; channel < 3; ++channel) {
    Word* counters = histograms.channels[channel];
    for (int32_t value = 0; value < kValues; ++value) {
      for (const auto& lane : lanes.lanes) counters[value] += lane[channel][value];
    }
  }
}

}  // namespace

int32_t CountColorKRT(REALpicture picture, uint32_t colour) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return 0;
  uint32_t found = 0;
  VisitPixels(source, WholeOf(source), [&]<Layout kLayout>(const Word* first, int32_t count) {
    const Pixel wanted = PixelOfColour(colour);
    uint32_t here = 0;
    for (int32_t x = 0; x < count; ++x) here += HasColour<kLayout>(first[x], wanted);
    found += here;
    return true;
  });
  return static_cast<int32_t>(found);
}

void CountColorsKRT(REALpicture picture, REALmemoryBlock* red, REALmemoryBlock* blue,
                    REALmemoryBlock* green, int32_t* count) {
  *count = -1;
  REALmemoryBlock* const inOrder[3] = {red, blue, green};
  for (REALmemoryBlock* block : inOrder) {
    if (*block == nullptr) *block = REALNewMemoryBlockOriginal(kHistogramBytes);
  }
  for (REALmemoryBlock* block : inOrder) {
    if (*block == nullptr) return;
  }

  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return;
  Histograms histograms{};
  for (int32_t channel = 0; channel < 3; ++channel) {
    const MemoryBlockBytes block = BytesOfMemoryBlock(*inOrder[channel]);
    if (!block.Holds(kHistogramBytes)) return;
    histograms.channels[channel] = reinterpret_cast<Word*>(block.data);
  }

  const Rectangle whole = WholeOf(source);
  const uint32_t pixels =
      whole.IsEmpty() ? 0
                      : static_cast<uint32_t>(whole.right) * static_cast<uint32_t>(whole.bottom);
  if (pixels < kFewPixels) {
    CountPicture(source, histograms);
  } else {
    CountInLanes(source, histograms);
  }
  *count = static_cast<int32_t>(pixels);
}
