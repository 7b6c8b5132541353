// RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as
// integer, Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as
// color=&c274C5A, OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean =
// false) as Picture
//
// Draws a waveform: each column of the picture stands for an equal share of the samples and shows
// twice the mean of their negative part above the middle row, of their positive part below it
// (intended). A SampleCount below 1 means the whole block, a Width below 1 a column for each
// sample, a Height below 1 500 rows. Columns without samples are empty, and so are all if there is
// nothing to scale by.
//
// Nil: the block is nil (NilObjectException), has no bytes or fewer than SampleCount needs; Bits is
// none of 7, 8, 15, 16, -32, -64; the picture would be larger than 32767 in either direction or
// can't be made; there is no memory.

#include "pixels/buffer.h"
#include "pixels/memory_block.h"
#include "pixels/write_rows.h"
#include "plugin/binding/exceptions.h"
#include "render/sample_columns.h"
#include "render/wu_line.h"

namespace {

constexpr int32_t kDefaultHeight = 500;

// An exponential moving average over `smooth` + 1 columns: each value is replaced by itself times
// `gain` plus the new value before it times `rest`. With smooth = 1 nothing changes; with 0 the
// gain is 2, which overshoots (intended); below 0 there is no average.
struct Smoothing {
  double gain;
  double rest;

  explicit constexpr Smoothing(int32_t smooth) : gain(2.0 / (smooth + 1.0)), rest(1.0 - gain) {}

  constexpr double Mix(double previous, double value) const {
    return previous * rest + value * gain;
  }
  void Run(double* values, int32_t count) const {
    double previous = values[0];
    for (int32_t i = 0; i < count; ++i) values[i] = previous = Mix(previous, values[i]);
  }
};

// The two curves of the picture: for each column the rows that it reaches, which may be any number
// at all, from the middle row.
struct Curves {
  int32_t count;
  int32_t middle;
  const int32_t* lower;
  const int32_t* upper;
};

void FindRows(const double* values, int32_t count, int32_t height, double scale, int32_t* rows) {
  const int32_t middle = height / 2;
  for (int32_t i = 0; i < count; ++i) {
    const double value = scale == 0 ? 0.0 : values[i] * height / scale;
    rows[i] = TruncateToInt32(value + middle);
  }
}

// One row of the picture: `bar` where the column reaches over it, `back` elsewhere.
void PaintRow(Word* row, int32_t count, int32_t y, const Curves& curves, uint32_t bar,
              uint32_t back) {
  const int32_t middle = curves.middle;
  const int32_t* lower = curves.lower;
  const int32_t* upper = curves.upper;
  for (int32_t x = 0; x < count; ++x) {
    const bool above = y <= middle && (y >= lower[x] || y >= upper[x]);
    const bool below = y >= middle && (y <= lower[x] || y <= upper[x]);
    row[x] = above || below ? bar : back;
  }
}

void PaintBars(const PictureWriter& writer, int32_t height, const Curves& curves, Pixel bar,
               Pixel back) {
  int32_t y = 0;
  WriteRows(writer, curves.count, height, [&]<Layout kLayout>(Word* row, int32_t count) {
    PaintRow(row, count, y, curves, Pack<kLayout>(bar), Pack<kLayout>(back));
    y += 1;
  });
}

// Calls `draw(x0, y0, x1, y1)` for every stretch of both curves, column by column. Both begin in
// the first column of the middle row.
template <class Draw>
void FollowCurves(const Curves& curves, const Draw& draw) {
  int32_t x = 0;
  // cppcheck-suppress duplicateAssignExpression ; two curves from one point
  int32_t lower = curves.middle;
  int32_t upper = curves.middle;
  for (int32_t column = 0; column < curves.count; ++column) {
    draw(x, lower, column, curves.lower[column]);
    draw(x, upper, column, curves.upper[column]);
    x = column;
    lower = curves.lower[column];
    upper = curves.upper[column];
  }
}

// Outlines that are thicker than a pixel are the host's to draw; where it can't there are none.
void OutlineByHost(REALpicture picture, const Curves& curves, int32_t penSize, uint32_t colour) {
  REALgraphics graphics = REALGetPictureGraphics(picture);
  if (graphics == nullptr) return;
  REALSetPropValueUInt32(AsObject(graphics), "ForeColor", colour);
  REALSetPropValueInt32(AsObject(graphics), "PenHeight", penSize);
  REALSetPropValueInt32(AsObject(graphics), "PenWidth", penSize);
  const int32_t toCorner = -(penSize / 2);
  FollowCurves(curves, [&](int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    GraphicsDrawLine(graphics, x0 + toCorner, WrappingAdd(y0, toCorner), x1 + toCorner,
                     WrappingAdd(y1, toCorner));
  });
  REALUnlockObject(AsObject(graphics));
}

}  // namespace

REALpicture RenderSamples(REALmemoryBlock samples, int32_t sampleCount, int32_t smooth,
                          int32_t width, int32_t height, int32_t outlineWidth, uint32_t backColour,
                          uint32_t foreColour, uint32_t outlineColour, int32_t bits,
                          int8_t autoScale) {
  if (samples == nullptr) {
    RaiseNilObject("memoryblock is nil");
    return nullptr;
  }
  const Pixel outline = PixelOfColour(outlineColour);
  gOutLineColorR = outline.red;
  gOutLineColorG = outline.green;
  gOutLineColorB = outline.blue;

  const SampleFormat* format = FindSampleFormat(bits);
  if (format == nullptr) return nullptr;
  const MemoryBlockBytes block = BytesOfMemoryBlock(samples);
  if (sampleCount < 1) sampleCount = DefaultSampleCount(block.size, bits);
  if (height <= 0) height = kDefaultHeight;
  if (width < 1) width = sampleCount;
  if (width < 1 || width > kMaxPictureSize || height > kMaxPictureSize) return nullptr;
  if (!block.Holds(int64_t{sampleCount} * format->bytes)) return nullptr;

  // The lower and the upper value of every column, then the rows that they reach.
  const size_t count = static_cast<size_t>(width);
  const Buffer memory = Buffer::Zeroed(count * 2 * (sizeof(double) + sizeof(int32_t)));
  if (!memory) return nullptr;
  // cppcheck-suppress invalidPointerCast ; memory as malloc aligns it, used for nothing else
  double* lower = reinterpret_cast<double*>(memory.bytes());
  double* upper = lower + count;
  // cppcheck-suppress invalidPointerCast ; the rest of it
  int32_t* lowerRows = reinterpret_cast<int32_t*>(upper + count);
  int32_t* upperRows = lowerRows + count;

  const double peak = format->reduce(block.data, sampleCount, {width, lower, upper});
  double scale = autoScale != 0 ? 2 * peak : format->fullScale;
  if (smooth >= 0) {
    const Smoothing smoothing(smooth);
    smoothing.Run(lower, width);
    smoothing.Run(upper, width);
    scale = smoothing.Mix(scale, scale);
  }
  FindRows(lower, width, height, scale, lowerRows);
  FindRows(upper, width, height, scale, upperRows);
  const Curves curves{width, height / 2, lowerRows, upperRows};

  PictureWriter writer;
  if (!writer.NewPictureWriter(width, height, false)) return nullptr;
  PaintBars(writer, height, curves, PixelOfColour(foreColour), PixelOfColour(backColour));
  if (outlineWidth == 1) {
    FollowCurves(curves, [&](int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
      DrawWuLine(writer, x0, y0, x1, y1);
    });
  }
  REALpicture picture = writer.RenderPictureWriter();
  if (outlineWidth > 1) OutlineByHost(picture, curves, outlineWidth, outlineColour);
  return picture;
}
