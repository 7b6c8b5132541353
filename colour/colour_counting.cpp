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

// Counters by channel (red, green, blue) and value.
struct Histograms {
  uint32_t counters[3][kValues];
};

constexpr void CountChannels(Pixel p, Histograms* histograms) {
  ++histograms->counters[0][p.red];
  ++histograms->counters[1][p.green];
  ++histograms->counters[2][p.blue];
}

// Neighbours are often alike, and a counter can't be raised again before its last rise is stored:
// four pixels in a row therefore go to counters of their own.
constexpr int32_t kLanes = 4;

template <Layout kLayout>
void CountRow(const Word* row, int32_t count, Histograms (&lanes)[kLanes]) {
  int32_t x = 0;
  for (; x <= count - kLanes; x += kLanes) {
    for (int32_t lane = 0; lane < kLanes; ++lane) {
      CountChannels(Unpack<kLayout>(row[x + lane]), &lanes[lane]);
    }
  }
  for (; x < count; ++x) CountChannels(Unpack<kLayout>(row[x]), &lanes[0]);
}

void AddHistogram(const Histograms (&lanes)[kLanes], int32_t channel, uint8_t* block) {
  Word* counters = reinterpret_cast<Word*>(block);
  for (int32_t value = 0; value < kValues; ++value) {
    for (const Histograms& lane : lanes) counters[value] += lane.counters[channel][value];
  }
}

Rectangle WholeOf(const PictureReader& source) {
  return ClipRectangle(kWholePicture, source.width, source.height);
}

}  // namespace

int32_t CountColorKRT(REALpicture picture, uint32_t colour) {
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return 0;
  uint32_t found = 0;
  VisitRows(source, WholeOf(source), [&]<Layout kLayout>(const Word* row, int32_t count) {
    const Pixel wanted = PixelOfColour(colour);
    uint32_t foundInRow = 0;
    for (int32_t x = 0; x < count; ++x) foundInRow += HasColour<kLayout>(row[x], wanted);
    found += foundInRow;
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
  MemoryBlockBytes blocks[3];
  for (int32_t channel = 0; channel < 3; ++channel) {
    blocks[channel] = BytesOfMemoryBlock(*inOrder[channel]);
    if (!blocks[channel].Holds(kHistogramBytes)) return;
  }

  Histograms lanes[kLanes] = {};
  uint32_t counted = 0;
  VisitRows(source, WholeOf(source), [&]<Layout kLayout>(const Word* row, int32_t width) {
    CountRow<kLayout>(row, width, lanes);
    counted += static_cast<uint32_t>(width);
    return true;
  });
  for (int32_t channel = 0; channel < 3; ++channel) {
    AddHistogram(lanes, channel, blocks[channel].data);
  }
  *count = static_cast<int32_t>(counted);
}
